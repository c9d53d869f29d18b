#include "render/BM_ImageExporter.h"

#include "core/UT_Format.h"
#include "render/BM_Convert.h"
#include "render/BM_PixelMap.h"
#include "render/BM_TgaCodec.h"

#include <algorithm>
#include <cctype>
#include <cstring>
#include <fstream>
#include <memory>

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavutil/frame.h>
}

namespace {

struct CodecFreer {
    void operator()(AVCodecContext* c) const { avcodec_free_context(&c); }
};
struct PacketFreer {
    void operator()(AVPacket* p) const { av_packet_free(&p); }
};
struct FrameFreer {
    void operator()(AVFrame* f) const { av_frame_free(&f); }
};

std::string LowerExtension(const UT_FilePath& path) {
    std::string ext = UT_ToUtf8(path.Extension());
    std::transform(ext.begin(), ext.end(), ext.begin(),
                   [](unsigned char c) { return char(std::tolower(c)); });
    if (!ext.empty() && ext[0] == '.')
        ext.erase(0, 1);
    return ext;
}

bool WriteBytes(const UT_FilePath& path, const std::vector<uint8_t>& bytes, UT_WString& error) {
    std::ofstream file(path.Path(), std::ios::binary | std::ios::trunc);
    if (file)
        file.write(reinterpret_cast<const char*>(bytes.data()), std::streamsize(bytes.size()));
    if (file)
        file.close();
    if (!file) {
        error = UT_Fmt(u"Unable to write to file %1$S", path.Wide());
        return false;
    }
    return true;
}

} // namespace

bool BM_ImageExporter::CanSave(const UT_FilePath& path) {
    const std::string ext = LowerExtension(path);
    return ext == "tga" || ext == "png";
}

bool BM_ImageExporter::Save(const UT_FilePath& path, const BM_Bitmap& bitmap, UT_WString& error) {
    const std::string ext = LowerExtension(path);
    if (ext == "tga")
        return BM_TgaCodec::Save(path, bitmap, error);
    if (ext != "png") {
        error = UT_Fmt(u"Unable to save %1$S: only TGA and PNG files can be written.", path.Wide());
        return false;
    }
    std::vector<uint8_t> bytes;
    return EncodePng(bitmap, bytes, error) && WriteBytes(path, bytes, error);
}

bool BM_ImageExporter::EncodePng(const BM_Bitmap& bitmap, std::vector<uint8_t>& bytes, UT_WString& error) {
    if (bitmap.IsEmpty() || bitmap.Width() > 0x7FFF || bitmap.Height() > 0x7FFF) {
        error = u"The image has no pixels or is too large for a PNG file.";
        return false;
    }
    BM_PixelMap<BM_PixelRgba32> rgba;
    if (!BM_Convert(rgba, bitmap)) {
        error = u"The image cannot be converted for a PNG file.";
        return false;
    }
    const AVCodec* encoder = avcodec_find_encoder(AV_CODEC_ID_PNG);
    std::unique_ptr<AVCodecContext, CodecFreer> codec(encoder ? avcodec_alloc_context3(encoder) : nullptr);
    std::unique_ptr<AVFrame, FrameFreer> frame(av_frame_alloc());
    std::unique_ptr<AVPacket, PacketFreer> packet(av_packet_alloc());
    if (!codec || !frame || !packet) {
        error = u"No PNG encoder is available.";
        return false;
    }
    codec->width = int(rgba.Width());
    codec->height = int(rgba.Height());
    codec->pix_fmt = AV_PIX_FMT_RGBA;
    codec->time_base = {1, 25};
    frame->format = AV_PIX_FMT_RGBA;
    frame->width = codec->width;
    frame->height = codec->height;
    if (avcodec_open2(codec.get(), encoder, nullptr) < 0 || av_frame_get_buffer(frame.get(), 0) < 0) {
        error = u"The PNG encoder cannot be started.";
        return false;
    }
    for (uint32_t y = 0; y < rgba.Height(); ++y)
        std::memcpy(frame->data[0] + size_t(frame->linesize[0]) * y, rgba.Row(y), size_t(rgba.Width()) * 4);
    if (avcodec_send_frame(codec.get(), frame.get()) < 0 || avcodec_send_frame(codec.get(), nullptr) < 0) {
        error = u"The PNG encoder refused the image.";
        return false;
    }
    bytes.clear();
    while (avcodec_receive_packet(codec.get(), packet.get()) == 0) {
        bytes.insert(bytes.end(), packet->data, packet->data + packet->size);
        av_packet_unref(packet.get());
    }
    if (bytes.empty()) {
        error = u"The PNG encoder gave no data.";
        return false;
    }
    return true;
}
