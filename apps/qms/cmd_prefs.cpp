// qms prefs: the user's preferences, in the same settings file the desktop program reads.

#include "QmsCommands.h"
#include "core/PR_Preferences.h"

#include <cstdio>

namespace {

const char* KindName(PR_Preferences::Kind kind) {
    switch (kind) {
    case PR_Preferences::Kind::kUnsigned:
    case PR_Preferences::Kind::kSigned:
        return "number";
    case PR_Preferences::Kind::kFlagIsOne:
    case PR_Preferences::Kind::kFlagNonZero:
        return "flag";
    case PR_Preferences::Kind::kColour:
        return "colour";
    case PR_Preferences::Kind::kText:
        return "text";
    case PR_Preferences::Kind::kBytes:
        return "bytes";
    }
    return "number";
}

std::string FullName(PR_Preferences::Key key) {
    const PR_Preferences::KeyInfo& info = PR_Preferences::Info(key);
    return std::string(info.section) + "/" + info.name;
}

// Colours print as 0xBBGGRR, other numbers in decimal.
std::string Shown(const PR_Preferences& prefs, PR_Preferences::Key key) {
    if (PR_Preferences::Info(key).kind != PR_Preferences::Kind::kColour)
        return UT_ToUtf8(prefs.Text(key));
    char text[16];
    std::snprintf(text, sizeof text, "0x%06llX", static_cast<unsigned long long>(prefs.Number(key)));
    return text;
}

void WriteJson(QmsJson& json, const PR_Preferences& prefs, PR_Preferences::Key key) {
    const PR_Preferences::KeyInfo& info = PR_Preferences::Info(key);
    json.BeginObject().Field("key", FullName(key)).Field("kind", KindName(info.kind));
    if (info.kind == PR_Preferences::Kind::kText) {
        json.Field("value", prefs.Text(key)).Field("default", prefs.DefaultText(key));
    } else {
        json.Field("value", prefs.Number(key)).Field("default", prefs.DefaultNumber(key));
        if (info.kind == PR_Preferences::Kind::kFlagIsOne || info.kind == PR_Preferences::Kind::kFlagNonZero)
            json.Field("on", prefs.Flag(key));
    }
    json.EndObject();
}

PR_Preferences::Key KeyArgument(const std::string& name) {
    const std::optional<PR_Preferences::Key> key = PR_Preferences::FindKey(name);
    if (!key)
        throw QmsUsageError("unknown preference '" + name + "'");
    return *key;
}

std::string StoreName(PR_Preferences& prefs) {
    if (auto* file = dynamic_cast<UT_IniSettingsStore*>(&prefs.Store()))
        return file->Path();
    return "the settings store";
}

} // namespace

int QmsRunPrefs(QmsContext& context, const std::vector<std::string>& words) {
    QmsArgs args(words, {});
    args.Check(0, 3, {"messages"});
    PR_Preferences& prefs = PR_Preferences::Instance();
    const std::string verb = args.Optional(0).value_or("");
    auto requireCount = [&args](size_t count) {
        if (args.Count() != count)
            throw QmsUsageError(args.Count() < count ? "too few arguments"
                                                     : "unexpected argument '" + args.At(count, "") + "'");
    };
    if (args.Flag("messages") && verb != "reset")
        throw QmsUsageError("--messages goes with reset only");

    if (verb.empty()) {
        if (context.json) {
            QmsJson json(context.out);
            json.BeginObject().Field("file", StoreName(prefs)).Key("preferences").BeginArray();
            for (int i = 0; i < PR_Preferences::kKeyCount; ++i)
                WriteJson(json, prefs, static_cast<PR_Preferences::Key>(i));
            json.EndArray().EndObject();
        } else {
            for (int i = 0; i < PR_Preferences::kKeyCount; ++i) {
                const auto key = static_cast<PR_Preferences::Key>(i);
                context.out << FullName(key) << "=" << Shown(prefs, key) << "\n";
            }
        }
    } else if (verb == "get") {
        requireCount(2);
        const PR_Preferences::Key key = KeyArgument(args.At(1, "KEY"));
        if (context.json) {
            QmsJson json(context.out);
            WriteJson(json, prefs, key);
        } else {
            context.out << Shown(prefs, key) << "\n";
        }
    } else if (verb == "set") {
        requireCount(3);
        const PR_Preferences::Key key = KeyArgument(args.At(1, "KEY"));
        const UT_WString refusal = prefs.SetFromText(key, args.At(2, "VALUE"));
        if (!refusal.empty())
            throw QmsUsageError(FullName(key) + ": " + UT_ToUtf8(refusal));
        if (!prefs.Save())
            throw QmsFailure("Cannot write the settings file " + StoreName(prefs));
        if (context.json) {
            QmsJson json(context.out);
            WriteJson(json, prefs, key);
        } else {
            context.out << FullName(key) << "=" << Shown(prefs, key) << "\n";
        }
    } else if (verb == "reset") {
        requireCount(1);
        bool written = prefs.ResetToDefaults();
        if (args.Flag("messages"))
            written = prefs.ClearSilencedMessages() && written;
        if (!written)
            throw QmsFailure("Cannot write the settings file " + StoreName(prefs));
        if (context.json)
            QmsJson(context.out)
                .BeginObject()
                .Field("file", StoreName(prefs))
                .Field("messagesCleared", args.Flag("messages"))
                .EndObject();
        else
            context.out << "preferences reset in " << StoreName(prefs) << "\n";
    } else {
        throw QmsUsageError("unknown action '" + verb + "': use get, set or reset");
    }
    return 0;
}
