// qms dump: the object tree of a container file, with offsets, for debugging.

#include "QmsCommands.h"
#include "QmsDump.h"
#include "animationset/CAnimationSetObj.h"
#include "core/CPersistentType.h"
#include "core/DB_Archive.h"
#include "core/DB_Exception.h"
#include "core/DB_FileContainer.h"
#include "core/DB_MemFile.h"

#include <cxxabi.h>
#include <fstream>
#include <iomanip>
#include <map>
#include <memory>

namespace {

// The file's bytes in memory, named as the file in messages.
class FileImage : public DB_MemFile {
public:
    explicit FileImage(UT_WString name) : name_(std::move(name)) {}
    UT_WString GetName() const override { return name_; }

private:
    UT_WString name_;
};

std::string ClassName(const CPersistentObjBase& object) {
    int status = 0;
    std::unique_ptr<char, void (*)(void*)> demangled(
        abi::__cxa_demangle(typeid(object).name(), nullptr, nullptr, &status), std::free);
    return status == 0 && demangled ? demangled.get() : typeid(object).name();
}

const char* KindName(int64_t kind) {
    switch (kind) {
    case DB_FileContainer::kProject:
        return "project file";
    case DB_FileContainer::kVectorDrawing:
        return "vector drawing";
    case DB_FileContainer::kCatalog:
        return "catalog";
    default:
        return "unknown kind";
    }
}

// Builds the nodes as the archive reports the objects.
class DumpTrace : public DB_ArchiveTrace {
public:
    DumpTrace(const DB_MemFile& file, std::vector<QmsDumpNode>& nodes, int baseDepth)
        : file_(file), nodes_(nodes), baseDepth_(baseDepth) {}

    void ObjectBegins(uint16_t typeId, const CPersistentObjBase* object) override {
        QmsDumpNode node;
        node.depth = baseDepth_ + static_cast<int>(open_.size());
        node.offset = file_.Position() - 2;
        node.typeId = typeId;
        node.what = object ? ClassName(*object) : "unknown type";
        open_.push_back(nodes_.size());
        nodes_.push_back(node);
    }
    void ObjectEnds() override {
        QmsDumpNode& node = nodes_[open_.back()];
        node.size = file_.Position() - node.offset;
        last_ = open_.back();
        open_.pop_back();
    }
    void SharedEntered(uint32_t index) override {
        nodes_[last_].shared = index;
        byIndex_[index] = nodes_[last_].what;
    }
    void SharedReferenced(uint32_t index) override {
        QmsDumpNode node;
        node.depth = baseDepth_ + static_cast<int>(open_.size());
        node.offset = file_.Position() - 6;
        node.size = 6;
        node.reference = index;
        auto known = byIndex_.find(index);
        node.what = index == 0 ? "null" : known != byIndex_.end() ? known->second : "nothing";
        nodes_.push_back(node);
    }

private:
    const DB_MemFile& file_;
    std::vector<QmsDumpNode>& nodes_;
    int baseDepth_;
    std::vector<size_t> open_;
    size_t last_ = 0;
    std::map<uint32_t, std::string> byIndex_;
};

void PrintText(std::ostream& out, const std::string& file, const QmsDumpResult& result) {
    out << file << ": " << result.fileSize << " bytes";
    if (result.kind >= 0)
        out << ", version " << result.version << ", kind " << result.kind << " (" << KindName(result.kind)
            << ")";
    out << "\n  offset      size  object\n";
    for (const QmsDumpNode& node : result.nodes) {
        out << std::setw(8) << node.offset << "  " << std::setw(8)
            << (node.size < 0 ? std::string("?") : std::to_string(node.size)) << "  "
            << std::string(static_cast<size_t>(node.depth) * 2, ' ');
        if (node.reference >= 0) {
            out << "-> #" << node.reference << " " << node.what;
        } else {
            if (node.typeId != 0)
                out << "[" << node.typeId << "] ";
            out << node.what;
            if (node.shared >= 0)
                out << "  #" << node.shared;
        }
        if (node.size < 0)
            out << "  (incomplete)";
        out << "\n";
    }
    if (result.trailing > 0)
        out << result.trailing << " bytes after the content\n";
}

void PrintJson(std::ostream& out, const std::string& file, const QmsDumpResult& result) {
    QmsJson json(out);
    json.BeginObject().Field("file", file).Field("size", result.fileSize);
    if (result.kind >= 0)
        json.Field("version", static_cast<int64_t>(result.version)).Field("kind", result.kind);
    json.Key("objects").BeginArray();
    for (const QmsDumpNode& node : result.nodes) {
        json.BeginObject().Field("offset", node.offset).Key("size");
        if (node.size < 0)
            json.Null();
        else
            json.Value(node.size);
        json.Field("depth", node.depth)
            .Field("typeId", static_cast<int64_t>(node.typeId))
            .Field("class", node.what);
        if (node.shared >= 0)
            json.Field("shared", node.shared);
        if (node.reference >= 0)
            json.Field("reference", node.reference);
        json.EndObject();
    }
    json.EndArray().Field("trailing", result.trailing);
    if (!result.error.empty())
        json.Field("error", result.error).Field("errorOffset", result.errorOffset);
    json.EndObject();
}

} // namespace

QmsDumpResult QmsDumpObjects(const std::vector<uint8_t>& bytes, const UT_WString& name) {
    QmsDumpResult result;
    result.fileSize = static_cast<uint32_t>(bytes.size());
    FileImage file(name);
    file.Write(bytes.data(), bytes.size());
    file.Rewind();
    DB_Archive archive(&file, false);
    DumpTrace trace(file, result.nodes, 1);
    try {
        result.kind = DB_FileContainer::ReadAnyHeader(archive, name);
        result.version = archive.Version();
        QmsDumpNode header;
        header.size = file.Position();
        header.what = "header";
        result.nodes.push_back(header);
        archive.SetTrace(&trace);
        if (result.kind == DB_FileContainer::kProject) {
            QmsDumpNode root;
            root.offset = file.Position();
            root.what = "CAnimationSetObj (bare body)";
            result.nodes.push_back(root);
            const size_t rootIndex = result.nodes.size() - 1;
            CAnimationSetObj set;
            set.Read(archive);
            result.nodes[rootIndex].size = file.Position() - root.offset;
        } else if (result.kind == DB_FileContainer::kVectorDrawing ||
                   result.kind == DB_FileContainer::kCatalog) {
            DumpTrace typed(file, result.nodes, 0);
            archive.SetTrace(&typed);
            archive.ReadNew();
        } else {
            throw DB_Exception(u"Kind " + UT_FromUtf8(std::to_string(result.kind)) +
                               u" holds nothing that this program reads");
        }
        result.trailing = static_cast<uint32_t>(file.BytesLeft());
    } catch (const DB_Exception& e) {
        result.error = UT_ToUtf8(e.Message());
        result.errorOffset = file.Position();
    }
    return result;
}

int QmsRunDump(QmsContext& context, const std::vector<std::string>& words) {
    QmsArgs args(words, {});
    args.Check(1, 1);
    const std::string path = args.At(0, "FILE");
    std::ifstream in(path, std::ios::binary);
    if (!in)
        throw QmsFailure("Unable to read " + path + ".");
    const std::vector<uint8_t> bytes((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
    if (in.bad())
        throw QmsFailure("Unable to read " + path + ".");
    const QmsDumpResult result = QmsDumpObjects(bytes, UT_FromUtf8(path));
    if (context.json)
        PrintJson(context.out, path, result);
    else
        PrintText(context.out, path, result);
    if (result.error.empty())
        return 0;
    context.err << "Reading stopped at offset " << result.errorOffset << ": " << result.error << "\n";
    return 1;
}
