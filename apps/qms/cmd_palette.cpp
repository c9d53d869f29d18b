// qms palette: the palettes of an animation set with their flavours and colours, listed
// and changed through the set's command history, then saved.

#include "QmsCommands.h"
#include "QmsHost.h"
#include "animationset/CAnimationSetObj.h"
#include "animationset/CSketchrunDoc.h"
#include "colour/CM_AddEntryCommand.h"
#include "colour/CM_AddPaletteCommand.h"
#include "colour/CM_EditEntryCommand.h"
#include "colour/CM_MoveEntryCommand.h"
#include "colour/CM_PaletteList.h"
#include "colour/CM_RemoveEntryCommand.h"
#include "colour/CM_RemovePaletteCommand.h"
#include "colour/CM_RemoveStyleCommand.h"
#include "colour/CM_RenameEntryCommand.h"
#include "colour/CM_RenamePaletteCommand.h"
#include "colour/CM_RenameStyleCommand.h"
#include "colour/CM_SwitchStyleCommand.h"
#include "colour/CM_Texture.h"
#include "colour/CM_Tint.h"
#include "colour/CM_TintCommand.h"
#include "core/UT_CommandHistory.h"

#include <array>
#include <cstdio>
#include <optional>
#include <set>
#include <sstream>
#include <string>

namespace {

// Ids show as 16 hex digits.
std::string IdText(UT_UniqueId id) {
    char buffer[17];
    std::snprintf(buffer, sizeof buffer, "%016llx", static_cast<unsigned long long>(id.Value()));
    return buffer;
}

std::string ColourText(BM_Rgba colour) {
    char buffer[10];
    std::snprintf(buffer, sizeof buffer, "#%02X%02X%02X%02X", colour.r, colour.g, colour.b, colour.a);
    return buffer;
}

std::string Quoted(const UT_WString& name) {
    return "\"" + UT_ToUtf8(name) + "\"";
}

const char* KindText(const CM_BaseColorObj& entry) {
    if (entry.GetClass() == CM_BaseColorObj::kTexture)
        return "texture";
    switch (static_cast<const CM_Color&>(entry).GetGradientKind()) {
    case CM_Color::kSolid:
        return "solid";
    case CM_Color::kLinear:
        return "linear";
    case CM_Color::kRadial:
        return "radial";
    default:
        return "gradient";
    }
}

// What an entry shows in the flavour in force: a solid colour's value, a gradient's stops,
// a texture's size.
std::string ValueText(const CM_BaseColorObj& entry) {
    std::ostringstream out;
    if (const auto* texture = dynamic_cast<const CM_Texture*>(&entry)) {
        const auto& data = texture->GetTextureData();
        if (data && data->Image().GetBitmap())
            out << data->Image().GetWidth() << "x" << data->Image().GetHeight();
        else
            out << "(no image)";
        return out.str();
    }
    const auto& color = static_cast<const CM_Color&>(entry);
    const CM_GradientStops& stops = color.Stops();
    if (stops.empty())
        return "(no stops)";
    if (color.GetGradientKind() == CM_Color::kSolid)
        return ColourText(stops.front().colour);
    for (size_t i = 0; i < stops.size(); ++i)
        out << (i ? ", " : "") << stops[i].position << " " << ColourText(stops[i].colour);
    return out.str();
}

void PrintPalette(std::ostream& out, const CM_Palette& palette) {
    out << "palette " << IdText(palette.GetId()) << " " << Quoted(palette.GetName()) << "\n  flavours:";
    const auto& styles = palette.GetStyles();
    for (size_t i = 0; i < styles.size(); ++i)
        out << (i ? "," : "") << " " << i + 1 << " " << Quoted(styles[i].name)
            << (i == palette.GetCurrentStyle() ? " (in force)" : "");
    out << "\n";
    for (size_t i = 0; i < palette.GetEntryCount(); ++i) {
        const CM_BaseColorObj& entry = *palette.GetEntry(i);
        out << "  " << i + 1 << "  " << IdText(entry.GetId()) << "  " << Quoted(entry.GetName()) << "  "
            << KindText(entry) << " " << ValueText(entry) << "\n";
    }
}

void JsonPalette(QmsJson& json, const CM_Palette& palette) {
    json.BeginObject()
        .Field("id", IdText(palette.GetId()))
        .Field("name", palette.GetName())
        .Field("flavour", static_cast<int64_t>(palette.GetCurrentStyle()) + 1)
        .Key("flavours")
        .BeginArray();
    int position = 1;
    for (const CM_PaletteStyle& style : palette.GetStyles())
        json.BeginObject()
            .Field("position", position++)
            .Field("id", style.id)
            .Field("name", style.name)
            .EndObject();
    json.EndArray().Key("colours").BeginArray();
    for (size_t i = 0; i < palette.GetEntryCount(); ++i) {
        const CM_BaseColorObj& entry = *palette.GetEntry(i);
        json.BeginObject()
            .Field("position", static_cast<int64_t>(i) + 1)
            .Field("id", IdText(entry.GetId()))
            .Field("name", entry.GetName())
            .Field("kind", KindText(entry));
        if (const auto* texture = dynamic_cast<const CM_Texture*>(&entry)) {
            const auto& data = texture->GetTextureData();
            json.Field("width", data ? data->Image().GetWidth() : 0u)
                .Field("height", data ? data->Image().GetHeight() : 0u);
        } else {
            const auto& color = static_cast<const CM_Color&>(entry);
            if (color.GetGradientKind() == CM_Color::kSolid && !color.Stops().empty())
                json.Field("colour", ColourText(color.Stops().front().colour));
            json.Key("stops").BeginArray();
            for (const CM_GradientData& stop : color.Stops())
                json.BeginObject()
                    .Field("position", stop.position)
                    .Field("colour", ColourText(stop.colour))
                    .EndObject();
            json.EndArray();
        }
        json.EndObject();
    }
    json.EndArray().EndObject();
}

// The palettes after a command: all of them for list, else the one the change concerned
// (none when it went).
void PrintPalettes(QmsContext& context, const CSketchrunDoc& document,
                   const std::vector<const CM_Palette*>& palettes, const std::string& done) {
    if (context.json) {
        QmsJson json(context.out);
        json.BeginObject().Field("project", document.ProjectFile().Utf8());
        if (!done.empty())
            json.Field("done", done);
        json.Key("palettes").BeginArray();
        for (const CM_Palette* palette : palettes)
            JsonPalette(json, *palette);
        json.EndArray().EndObject();
        return;
    }
    if (!done.empty())
        context.out << done << "\n";
    for (const CM_Palette* palette : palettes)
        PrintPalette(context.out, *palette);
}

UT_UniqueId ParseId(const std::string& text, const char* what) {
    std::string digits = text;
    if (digits.size() > 2 && digits[0] == '0' && (digits[1] == 'x' || digits[1] == 'X'))
        digits.erase(0, 2);
    const bool hex = !digits.empty() && digits.size() <= 16 &&
                     digits.find_first_not_of("0123456789abcdefABCDEF") == std::string::npos;
    if (!hex)
        throw QmsUsageError(std::string(what) +
                            " must be an id of up to 16 hex digits, as 'qms palette list' shows, not '" +
                            text + "'");
    return UT_UniqueId(std::stoull(digits, nullptr, 16));
}

CM_Palette& PaletteArgument(CM_PaletteList& list, const std::string& text) {
    CM_Palette* palette = list.FindPalette(ParseId(text, "PALETTE"));
    if (!palette)
        throw QmsFailure("Unknown palette id " + text + "; 'qms palette list' shows the palettes.");
    return *palette;
}

// The palette that holds a colour id, and the colour's position in it.
CM_PaletteList::EntryPlace ColourArgument(CM_PaletteList& list, const std::string& text) {
    const CM_PaletteList::EntryPlace place = list.FindEntry(ParseId(text, "COLOUR"));
    if (!place.palette)
        throw QmsFailure("Unknown colour id " + text + "; 'qms palette list' shows the colours.");
    return place;
}

// "#RRGGBB" or "#RRGGBBAA"; without alpha the colour is opaque.
BM_Rgba ParseColour(const std::string& text) {
    const bool ok = (text.size() == 7 || text.size() == 9) && text[0] == '#' &&
                    text.find_first_not_of("0123456789abcdefABCDEF", 1) == std::string::npos;
    if (!ok)
        throw QmsUsageError("a colour is written #RRGGBB or #RRGGBBAA in hex digits, not '" + text + "'");
    const auto channel = [&text](size_t at) {
        return static_cast<uint8_t>(std::stoul(text.substr(at, 2), nullptr, 16));
    };
    return {channel(1), channel(3), channel(5), text.size() == 9 ? channel(7) : uint8_t(255)};
}

UT_WString NameArgument(const std::string& text, const char* what) {
    UT_WString name = UT_FromUtf8(text);
    if (name.empty())
        throw QmsFailure(std::string("The name of the ") + what + " cannot be empty.");
    return name;
}

// A flavour by its name, or else by its position from 1.
uint32_t FlavourArgument(const CM_Palette& palette, const std::string& text) {
    const UT_WString name = UT_FromUtf8(text);
    const auto& styles = palette.GetStyles();
    for (size_t i = 0; i < styles.size(); ++i)
        if (styles[i].name == name)
            return static_cast<uint32_t>(i);
    if (!text.empty() && text.find_first_not_of("0123456789") == std::string::npos && text.size() < 10) {
        const auto position = std::stoul(text);
        if (position >= 1 && position <= styles.size())
            return static_cast<uint32_t>(position - 1);
    }
    throw QmsFailure("Palette " + Quoted(palette.GetName()) + " has no flavour named or numbered '" + text +
                     "'.");
}

UT_WString NewFlavourName(const CM_Palette& palette, const std::string& text) {
    UT_WString name = NameArgument(text, "flavour");
    if (palette.HasStyleNamed(name))
        throw QmsFailure("Palette " + Quoted(palette.GetName()) + " has a flavour named " + Quoted(name) +
                         " already; please choose a different name.");
    return name;
}

// Three numbers separated by commas.
std::array<double, 3> TripleArgument(const std::string& text, const char* option) {
    std::array<double, 3> values{};
    std::istringstream in(text);
    std::string part;
    size_t count = 0;
    while (std::getline(in, part, ',')) {
        if (count == 3)
            throw QmsUsageError(std::string("--") + option + " takes three numbers separated by commas");
        values[count++] = QmsArgs::ParseDouble(part, option);
    }
    if (count != 3)
        throw QmsUsageError(std::string("--") + option + " takes three numbers separated by commas");
    return values;
}

double Bounded(double value, double low, double high, const std::string& what) {
    if (value < low || value > high)
        throw QmsUsageError(what + " must lie between " + std::to_string(int(low)) + " and " +
                            std::to_string(int(high)));
    return value;
}

CM_Tint TintArgument(const QmsArgs& args) {
    const int modes =
        (args.Option("rgb") ? 1 : 0) + (args.Option("hsv") ? 1 : 0) + (args.Option("blend") ? 1 : 0);
    if (modes != 1)
        throw QmsUsageError("tint takes one of --rgb, --hsv or --blend");
    if (args.Option("blend")) {
        if (args.Option("alpha"))
            throw QmsUsageError("--alpha goes with --rgb or --hsv; --blend takes the alpha of its colour");
        const double percent =
            args.Option("amount")
                ? Bounded(QmsArgs::ParseDouble(*args.Option("amount"), "--amount"), 0, 100, "--amount")
                : 50.0;
        return CM_Tint::Blend(ParseColour(*args.Option("blend")), percent);
    }
    const float percent =
        args.Option("amount")
            ? static_cast<float>(
                  Bounded(QmsArgs::ParseDouble(*args.Option("amount"), "--amount"), 0, 100, "--amount"))
            : 100.0f;
    const int alpha = args.Option("alpha")
                          ? static_cast<int>(Bounded(QmsArgs::ParseInt(*args.Option("alpha"), "--alpha"),
                                                     -255, 255, "--alpha"))
                          : 0;
    if (args.Option("rgb")) {
        const auto rgb = TripleArgument(*args.Option("rgb"), "rgb");
        for (double v : rgb)
            Bounded(v, -255, 255, "each offset of --rgb");
        return CM_Tint::OffsetRgb(int(rgb[0]), int(rgb[1]), int(rgb[2]), alpha, percent);
    }
    const auto hsv = TripleArgument(*args.Option("hsv"), "hsv");
    Bounded(hsv[0], -360, 360, "the hue offset of --hsv");
    Bounded(hsv[1], -100, 100, "the saturation offset of --hsv");
    Bounded(hsv[2], -100, 100, "the value offset of --hsv");
    return CM_Tint::OffsetHsv(hsv[0], hsv[1] * 0.01, hsv[2] * 0.01, alpha, percent);
}

// Runs the change through the set's history, as the desktop program does, and saves.
void Apply(CSketchrunDoc& document, UT_Command& command, const UT_WString& name) {
    if (!document.Set()->History().Execute(command, name))
        throw QmsFailure(UT_ToUtf8(name) + " failed; the project is unchanged.");
    QmsSaveProject(document);
}

// The shape of each action: how many arguments it takes from PROJECT on, how many of the
// last of them may be left out, and the options that go with it.
struct Verb {
    const char* name;
    size_t positionals;
    size_t optional;
    std::set<std::string> options;
};

const std::vector<Verb>& Verbs() {
    static const std::vector<Verb> verbs = {
        {"list", 2, 1, {}},
        {"add", 2, 0, {"flavour", "at"}},
        {"add-colour", 4, 0, {"at"}},
        {"set", 3, 0, {}},
        {"rename", 3, 0, {}},
        {"remove", 2, 0, {}},
        {"duplicate", 3, 1, {}},
        {"move", 3, 0, {}},
        {"flavour", 3, 0, {}},
        {"rename-flavour", 4, 0, {}},
        {"remove-flavour", 3, 0, {}},
        {"tint", 2, 0, {"rgb", "hsv", "blend", "alpha", "amount", "from", "into"}},
    };
    return verbs;
}

} // namespace

int QmsRunPalette(QmsContext& context, const std::vector<std::string>& words) {
    std::set<std::string> valueOptions;
    for (const Verb& verb : Verbs())
        valueOptions.insert(verb.options.begin(), verb.options.end());
    QmsArgs args(words, valueOptions);
    const std::string action = args.At(0, "ACTION");
    const Verb* verb = nullptr;
    for (const Verb& candidate : Verbs())
        if (action == candidate.name)
            verb = &candidate;
    if (!verb)
        throw QmsUsageError("unknown action '" + action +
                            "': use list, add, add-colour, set, rename, remove, duplicate, move, flavour, "
                            "rename-flavour, remove-flavour or tint");
    // The action, PROJECT, and the verb's own arguments.
    args.Check(2, verb->positionals + 1);
    if (args.Count() < verb->positionals + 1 - verb->optional)
        throw QmsUsageError("too few arguments");
    for (const std::string& option : valueOptions)
        if (args.Option(option) && !verb->options.count(option))
            throw QmsUsageError("--" + option + " does not go with " + action);

    QmsHost host;
    CSketchrunDoc document(host);
    QmsOpenProject(document, args.At(1, "PROJECT"));
    CM_PaletteList& list = document.Set()->PaletteList();
    const auto arg = [&args](size_t index, const char* what) { return args.At(index + 2, what); };
    std::string done;
    UT_UniqueId shown;

    if (action == "list") {
        std::vector<const CM_Palette*> palettes;
        if (args.Count() == 3) {
            palettes.push_back(&PaletteArgument(list, arg(0, "PALETTE")));
        } else {
            for (size_t i = 0; i < list.GetPaletteCount(); ++i)
                palettes.push_back(list.GetPalette(i));
        }
        PrintPalettes(context, document, palettes, done);
        return 0;
    } else if (action == "add") {
        const UT_WString name = NameArgument(arg(0, "NAME"), "palette");
        const UT_WString flavour = args.Option("flavour") ? NameArgument(*args.Option("flavour"), "flavour")
                                                          : UT_WString(u"Default");
        const size_t index = args.Option("at")
                                 ? QmsArgs::ParsePosition(*args.Option("at"), list.GetPaletteCount() + 1)
                                 : list.GetPaletteCount();
        std::unique_ptr<CM_AddPaletteCommand> add =
            CM_AddPaletteCommand::NewPalette(list, name, flavour, index);
        shown = add->PaletteId();
        Apply(document, *add, CM_AddPaletteCommand::kName);
        done = "added palette " + IdText(shown) + " " + Quoted(name) + " at position " +
               std::to_string(index + 1);
    } else if (action == "add-colour") {
        CM_Palette& palette = PaletteArgument(list, arg(0, "PALETTE"));
        const UT_WString name = NameArgument(arg(1, "NAME"), "colour");
        const BM_Rgba colour = ParseColour(arg(2, "COLOUR"));
        const size_t position = args.Option("at")
                                    ? QmsArgs::ParsePosition(*args.Option("at"), palette.GetEntryCount() + 1)
                                    : palette.GetEntryCount();
        shown = palette.GetId();
        CM_AddEntryCommand add(list, shown, position, CM_Color::MakeSolid(name, colour));
        const UT_UniqueId id = add.EntryId();
        Apply(document, add, CM_AddEntryCommand::kName);
        done = "added colour " + IdText(id) + " " + Quoted(name) + " to palette " + IdText(shown) +
               " at position " + std::to_string(position + 1);
    } else if (action == "set") {
        const CM_PaletteList::EntryPlace place = ColourArgument(list, arg(0, "COLOUR_ID"));
        const BM_Rgba colour = ParseColour(arg(1, "COLOUR"));
        const CM_BaseColorObj& entry = *place.palette->GetEntry(static_cast<size_t>(place.index));
        std::unique_ptr<CM_EditEntryCommand> edit =
            CM_EditEntryCommand::SolidColor(list, entry.GetId(), colour);
        if (!edit)
            throw QmsFailure(IdText(entry.GetId()) + " " + Quoted(entry.GetName()) +
                             " is a texture; only colours take a colour value.");
        shown = place.palette->GetId();
        Apply(document, *edit, CM_EditEntryCommand::kName);
        done = "set colour " + IdText(entry.GetId()) + " to " + ColourText(colour) + " in flavour " +
               Quoted(place.palette->GetStyles()[place.palette->GetCurrentStyle()].name);
    } else if (action == "rename" || action == "remove") {
        const UT_UniqueId id = ParseId(arg(0, "ID"), "ID");
        const bool rename = action == "rename";
        const UT_WString name = rename ? NameArgument(arg(1, "NAME"), "palette or colour") : UT_WString();
        if (const CM_Palette* palette = list.FindPalette(id)) {
            if (rename) {
                CM_RenamePaletteCommand command(list, id, name);
                Apply(document, command, CM_RenamePaletteCommand::kName);
                shown = id;
                done = "renamed palette " + IdText(id) + " to " + Quoted(name);
            } else {
                const UT_WString old = palette->GetName();
                CM_RemovePaletteCommand command(list, id);
                Apply(document, command, CM_RemovePaletteCommand::kName);
                done = "removed palette " + IdText(id) + " " + Quoted(old);
            }
        } else {
            const CM_PaletteList::EntryPlace place = list.FindEntry(id);
            if (!place.palette)
                throw QmsFailure("Unknown palette or colour id " + arg(0, "ID") +
                                 "; 'qms palette list' shows the palettes and their colours.");
            shown = place.palette->GetId();
            if (rename) {
                CM_RenameEntryCommand command(list, id, name);
                Apply(document, command, CM_RenameEntryCommand::kName);
                done = "renamed colour " + IdText(id) + " to " + Quoted(name);
            } else {
                const UT_WString old = place.palette->GetEntry(static_cast<size_t>(place.index))->GetName();
                CM_RemoveEntryCommand command(list, id);
                Apply(document, command, CM_RemoveEntryCommand::kName);
                done = "removed colour " + IdText(id) + " " + Quoted(old) + " from palette " + IdText(shown);
            }
        }
    } else if (action == "duplicate") {
        const CM_Palette& source = PaletteArgument(list, arg(0, "PALETTE"));
        const UT_WString name = args.Count() == 4 ? NameArgument(arg(1, "NAME"), "palette")
                                                  : UT_WString(u"Copy of ") + source.GetName();
        std::unique_ptr<CM_AddPaletteCommand> duplicate =
            CM_AddPaletteCommand::Duplicate(list, source.GetId(), name);
        shown = duplicate->PaletteId();
        Apply(document, *duplicate, CM_AddPaletteCommand::kDuplicateName);
        done = "duplicated palette " + IdText(source.GetId()) + " as " + IdText(shown) + " " + Quoted(name);
    } else if (action == "move") {
        const CM_PaletteList::EntryPlace place = ColourArgument(list, arg(0, "COLOUR_ID"));
        const size_t to = QmsArgs::ParsePosition(arg(1, "POSITION"), place.palette->GetEntryCount());
        const UT_UniqueId id = place.palette->GetEntry(static_cast<size_t>(place.index))->GetId();
        shown = place.palette->GetId();
        CM_MoveEntryCommand move(list, id, to);
        Apply(document, move, CM_MoveEntryCommand::kName);
        done = "moved colour " + IdText(id) + " to position " + std::to_string(to + 1);
    } else if (action == "flavour" || action == "rename-flavour" || action == "remove-flavour") {
        CM_Palette& palette = PaletteArgument(list, arg(0, "PALETTE"));
        const uint32_t style = FlavourArgument(palette, arg(1, "FLAVOUR"));
        const UT_WString old = palette.GetStyles()[style].name;
        const std::string which = "flavour " + std::to_string(style + 1) + " " + Quoted(old);
        shown = palette.GetId();
        if (action == "flavour") {
            if (style != palette.GetCurrentStyle()) {
                CM_SwitchStyleCommand command(list, shown, style);
                Apply(document, command, CM_SwitchStyleCommand::kName);
            }
            done = "palette " + IdText(shown) + " shows " + which;
        } else if (action == "rename-flavour") {
            const UT_WString name = NewFlavourName(palette, arg(2, "NAME"));
            CM_RenameStyleCommand command(list, shown, style, name);
            Apply(document, command, CM_RenameStyleCommand::kName);
            done = "renamed " + which + " to " + Quoted(name);
        } else {
            if (palette.GetStyleCount() < 2)
                throw QmsFailure("F" + which.substr(1) + " is the only flavour of palette " + IdText(shown) +
                                 "; a palette keeps at least one.");
            CM_RemoveStyleCommand command(list, shown, style);
            Apply(document, command, CM_RemoveStyleCommand::kName);
            done = "removed " + which + " from palette " + IdText(shown);
        }
    } else {
        CM_Palette& palette = PaletteArgument(list, arg(0, "PALETTE"));
        const CM_Tint tint = TintArgument(args);
        const uint32_t from =
            args.Option("from") ? FlavourArgument(palette, *args.Option("from")) : palette.GetCurrentStyle();
        const UT_WString source = palette.GetStyles()[from].name;
        std::optional<uint32_t> into = from;
        UT_WString name = source;
        if (args.Option("into")) {
            name = NewFlavourName(palette, *args.Option("into"));
            into.reset();
        }
        shown = palette.GetId();
        std::unique_ptr<CM_TintCommand> command = CM_TintCommand::Make(list, shown, tint, from, into, name);
        if (!command)
            throw QmsFailure("The flavours of palette " + IdText(shown) + " cannot be tinted.");
        Apply(document, *command, CM_TintCommand::kName);
        done = "tinted flavour " + Quoted(source) + " of palette " + IdText(shown) +
               (into ? std::string() : " into the new flavour " + Quoted(name));
    }

    std::vector<const CM_Palette*> palettes;
    if (const CM_Palette* palette = list.FindPalette(shown))
        palettes.push_back(palette);
    PrintPalettes(context, document, palettes, done);
    return 0;
}
