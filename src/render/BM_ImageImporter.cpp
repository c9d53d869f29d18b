#include "render/BM_ImageImporter.h"

#include "core/UT_Format.h"
#include "render/BM_TgaCodec.h"

#include <algorithm>
#include <cctype>
#include <fstream>
#include <memory>

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
#include <libavutil/imgutils.h>
#include <libavutil/log.h>
#include <libswscale/swscale.h>
}

namespace {

// Pictures above this many pixels are refused before they are converted.
constexpr uint64_t kMaxPixels = uint64_t(1) << 28;

struct FormatCloser {
    void operator()(AVFormatContext* c) const { avformat_close_input(&c); }
};
struct CodecFreer {
    void operator()(AVCodecContext* c) const { avcodec_free_context(&c); }
};
struct PacketFreer {
    void operator()(AVPacket* p) const { av_packet_free(&p); }
};
struct FrameFreer {
    void operator()(AVFrame* f) const { av_frame_free(&f); }
};
struct ScaleFreer {
    void operator()(SwsContext* s) const { sws_freeContext(s); }
};

UT_WString Failure(const UT_FilePath& path, const char16_t* why) {
    return UT_Fmt(u"Unable to load the image file %1$S: %2$S", path.Wide(), UT_WString(why));
}

bool HasTgaExtension(const UT_FilePath& path) {
    std::string ext = UT_ToUtf8(path.Extension());
    std::transform(ext.begin(), ext.end(), ext.begin(),
                   [](unsigned char c) { return char(std::tolower(c)); });
    return ext == "tga";
}

// Receives the first decoded picture, feeding packets of the stream until one comes.
bool DecodeFirstFrame(AVFormatContext* format, AVCodecContext* codec, int stream, AVFrame* frame) {
    std::unique_ptr<AVPacket, PacketFreer> packet(av_packet_alloc());
    if (!packet)
        return false;
    while (av_read_frame(format, packet.get()) >= 0) {
        if (packet->stream_index == stream) {
            const int sent = avcodec_send_packet(codec, packet.get());
            av_packet_unref(packet.get());
            if (sent < 0 && sent != AVERROR(EAGAIN))
                return false;
            if (avcodec_receive_frame(codec, frame) == 0)
                return true;
        } else {
            av_packet_unref(packet.get());
        }
    }
    avcodec_send_packet(codec, nullptr);
    return avcodec_receive_frame(codec, frame) == 0;
}

} // namespace

bool BM_ImageImporter::Load(const UT_FilePath& path, BM_PixelMap<BM_PixelRgba32>& out, UT_WString& error) {
    if (HasTgaExtension(path))
        return BM_TgaCodec::Load(path, out, error);
    return LoadWithDecoders(path, out, error);
}

bool BM_ImageImporter::LoadWithDecoders(const UT_FilePath& path, BM_PixelMap<BM_PixelRgba32>& out,
                                        UT_WString& error) {
    // Failures are reported through `error`; the decoders' own log would repeat them on
    // the error output.
    static const bool quiet = (av_log_set_level(AV_LOG_FATAL), true);
    (void)quiet;
    AVFormatContext* rawFormat = nullptr;
    if (avformat_open_input(&rawFormat, path.Utf8().c_str(), nullptr, nullptr) < 0) {
        error = Failure(path, u"the file cannot be opened or its type is unknown.");
        return false;
    }
    std::unique_ptr<AVFormatContext, FormatCloser> format(rawFormat);
    if (avformat_find_stream_info(format.get(), nullptr) < 0) {
        error = Failure(path, u"the file holds no readable picture.");
        return false;
    }
    const AVCodec* decoder = nullptr;
    const int stream = av_find_best_stream(format.get(), AVMEDIA_TYPE_VIDEO, -1, -1, &decoder, 0);
    if (stream < 0 || !decoder) {
        error = Failure(path, u"the file holds no picture.");
        return false;
    }
    std::unique_ptr<AVCodecContext, CodecFreer> codec(avcodec_alloc_context3(decoder));
    if (!codec || avcodec_parameters_to_context(codec.get(), format->streams[stream]->codecpar) < 0 ||
        avcodec_open2(codec.get(), decoder, nullptr) < 0) {
        error = Failure(path, u"no decoder for this picture.");
        return false;
    }
    std::unique_ptr<AVFrame, FrameFreer> frame(av_frame_alloc());
    if (!frame || !DecodeFirstFrame(format.get(), codec.get(), stream, frame.get())) {
        error = Failure(path, u"the picture cannot be decoded.");
        return false;
    }
    const int width = frame->width, height = frame->height;
    if (width <= 0 || height <= 0 || uint64_t(width) * uint64_t(height) > kMaxPixels) {
        error = Failure(path, u"the picture has an unusable size.");
        return false;
    }
    std::unique_ptr<SwsContext, ScaleFreer> scaler(sws_getContext(width, height, AVPixelFormat(frame->format),
                                                                  width, height, AV_PIX_FMT_RGBA, SWS_POINT,
                                                                  nullptr, nullptr, nullptr));
    if (!scaler) {
        error = Failure(path, u"its pixel format cannot be converted.");
        return false;
    }
    BM_PixelMap<BM_PixelRgba32> map(static_cast<uint32_t>(width), static_cast<uint32_t>(height));
    uint8_t* planes[4] = {map.Data(), nullptr, nullptr, nullptr};
    const int strides[4] = {int(map.GetStride()), 0, 0, 0};
    if (sws_scale(scaler.get(), frame->data, frame->linesize, 0, height, planes, strides) != height) {
        error = Failure(path, u"its pixels cannot be converted.");
        return false;
    }
    out = std::move(map);
    return true;
}
