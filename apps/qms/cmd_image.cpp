// qms image convert: any readable image file (TGA through our codec, other types through
// the platform's decoders) written as TGA or PNG, as a bitmap element stores its images.

#include "QmsCommands.h"
#include "render/BM_ImageExporter.h"
#include "render/BM_QMTBitmap.h"

namespace {

int RunConvert(QmsContext& context, const QmsArgs& args) {
    args.Check(3, 3);
    const std::string input = args.At(1, "IN");
    const std::string output = args.At(2, "OUT");
    const UT_FilePath outPath(output);
    if (!BM_ImageExporter::CanSave(outPath))
        throw QmsUsageError("OUT must end in .tga or .png: " + output);
    BM_QMTBitmap bitmap;
    UT_WString error;
    if (!bitmap.LoadFromFile(UT_FilePath(input), &error))
        throw QmsFailure(error);
    if (!bitmap.SaveToFile(outPath, &error))
        throw QmsFailure(error);
    if (context.json) {
        QmsJson(context.out)
            .BeginObject()
            .Field("input", input)
            .Field("output", output)
            .Field("width", bitmap.GetWidth())
            .Field("height", bitmap.GetHeight())
            .EndObject();
    } else {
        context.out << input << " -> " << output << " (" << bitmap.GetWidth() << "x" << bitmap.GetHeight()
                    << ")\n";
    }
    return 0;
}

} // namespace

int QmsRunImage(QmsContext& context, const std::vector<std::string>& words) {
    QmsArgs args(words, {});
    const std::string action = args.At(0, "ACTION");
    if (action == "convert")
        return RunConvert(context, args);
    throw QmsUsageError("unknown image action: " + action);
}
