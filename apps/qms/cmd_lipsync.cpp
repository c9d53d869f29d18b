#include "QmsCommands.h"
#include "lipsync/LipSyncAlgorithm.h"
#include "lipsync/LipsyncExit.h"
#include "lipsync/LipsyncFiles.h"
#include "lipsync/LipsyncSound.h"

#include <string>
#include <vector>

namespace {

// Fatal errors of the recogniser end the command with their message instead of the process.
class ThrowingExit {
public:
    ThrowingExit() : previous_(LipsyncSetExitRoutine(&LipsyncThrowingExit)) {}
    ~ThrowingExit() { LipsyncSetExitRoutine(previous_); }
    ThrowingExit(const ThrowingExit&) = delete;
    ThrowingExit& operator=(const ThrowingExit&) = delete;

private:
    LipsyncExitRoutine previous_;
};

} // namespace

int QmsRunLipsync(QmsContext& context, const std::vector<std::string>& words) {
    QmsArgs args(words, {"fps"});
    args.Check(1, 1);
    int fps = 24;
    if (auto text = args.Option("fps")) {
        const int64_t value = QmsArgs::ParseInt(*text, "--fps");
        if (value < 1 || value > 1000)
            throw QmsUsageError("--fps must lie between 1 and 1000");
        fps = static_cast<int>(value);
    }
    const std::string& path = args.At(0, "AUDIO");
    if (LipsyncFiles::shippedModel('A').empty())
        throw QmsFailure(
            "lip-sync: this build carries no mouth models (src/lipsync/data/mouth_models.bin is empty); "
            "see src/lipsync/MODELS.md to train them");
    std::vector<int16_t> samples;
    std::string error;
    if (!LipsyncReadSound(path, samples, error))
        throw QmsFailure(error);

    LipsyncAnalysis analysis;
    {
        ThrowingExit exitRoutine;
        QmsTerminalProgress progress;
        progress.SetText(u"Computing lip-sync data...");
        CLipSyncProgress callback(progress, LipSyncAlgorithm::BlockCount(int64_t(samples.size())));
        try {
            analysis = LipSyncAlgorithm::Analyse(samples.data(), int64_t(samples.size()), fps, &callback);
        } catch (const LipsyncFatalError& e) {
            throw QmsFailure("lip-sync: " + std::string(e.what()));
        }
    }
    std::string letters;
    for (uint8_t code : analysis.codes)
        letters += LipSyncAlgorithm::MouthLetter(code);
    if (context.json) {
        QmsJson json(context.out);
        json.BeginObject()
            .Field("file", path)
            .Field("samples", int64_t(samples.size()))
            .Field("fps", fps)
            .Field("blocks", analysis.blocks)
            .Field("stopped", analysis.stopped)
            .Key("segments")
            .BeginArray();
        for (const LipsyncSegment& s : analysis.segments)
            json.BeginObject()
                .Field("shape", std::string(1, s.letter))
                .Field("start", double(s.start) / 1e7)
                .Field("duration", double(s.duration) / 1e7)
                .EndObject();
        json.EndArray().Field("frames", letters).EndObject();
        context.out << "\n";
    } else {
        context.out << letters << "\n";
    }
    if (analysis.stopped) {
        context.err << "qms lipsync: stopped\n";
        return 1;
    }
    return 0;
}
