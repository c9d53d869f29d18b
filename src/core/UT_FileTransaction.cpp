#include "core/UT_FileTransaction.h"

#include "core/UT_ErrorCollector.h"
#include "core/UT_FileOperations.h"
#include "core/UT_Format.h"

#include <exception>

namespace {

UT_FileTransaction::Handle g_live;

bool IsTemporaryOf(uint32_t operation) {
    return operation == UT_FileTransaction::kReplace || operation == UT_FileTransaction::kUndoDelete ||
           operation == UT_FileTransaction::kUndoUndoReplace;
}

} // namespace

UT_FileTransaction::Handle UT_FileTransaction::Get() {
    if (Handle live = g_live.Lock())
        return live;
    Handle handle = Handle::Make(new UT_FileTransaction);
    g_live = handle.Weak();
    return handle;
}

UT_FileTransaction::~UT_FileTransaction() {
    if (entries_.empty())
        return;
    const UT_ErrorCollector* collector = UT_ErrorCollector::Live();
    if (std::uncaught_exceptions() > 0 || (collector && !collector->IsEmpty())) {
        Rollback();
        return;
    }
    if (!Commit()) {
        if (UT_ErrorCollector* live = UT_ErrorCollector::Live())
            live->Add(errorText_);
    }
}

UT_FilePath UT_FileTransaction::FreeName(const UT_FilePath& path, std::u16string_view suffix) {
    UT_FilePath candidate = path.AppendSuffix(suffix);
    for (int counter = 1; candidate.Exists() == 0 && counter <= 10000; ++counter)
        candidate = path.AppendSuffix(UT_Fmt(u"%d.%S", UT_Num(counter), UT_WString(suffix)));
    return candidate;
}

UT_FilePath UT_FileTransaction::AddReplace(const UT_FilePath& finalPath) {
    if (finalPath.Exists() == 0)
        entries_.push_back({kDeleteReplaced, finalPath, UT_FilePath()});
    UT_FilePath temporary = FreeName(finalPath, u"new");
    entries_.push_back({kReplace, temporary, finalPath});
    return temporary;
}

void UT_FileTransaction::AddRename(const UT_FilePath& from, const UT_FilePath& to) {
    entries_.push_back({kRename, from, to});
}

void UT_FileTransaction::AddDelete(const UT_FilePath& path, uint32_t operation) {
    entries_.push_back({operation, path, UT_FilePath()});
}

bool UT_FileTransaction::CheckEntries() {
    UT_FileOperations& ops = UT_FileOperations::Current();
    for (const Entry& entry : entries_) {
        if (entry.operation == kDeleteIfPossible)
            continue;
        if (ops.Access(entry.first) != 0) {
            errorText_ = UT_Fmt(u"Unable to access file %1$S.", entry.first.Wide());
            return false;
        }
        if ((entry.operation == kDeleteReplaced || entry.operation == kDelete) && entry.first.IsFile() &&
            !ops.IsWritable(entry.first)) {
            errorText_ = UT_Fmt(u"%1$S is read-only", entry.first.Wide());
            return false;
        }
    }
    return true;
}

bool UT_FileTransaction::Perform(const Entry& entry, std::vector<Entry>& undo) {
    UT_FileOperations& ops = UT_FileOperations::Current();
    auto rename = [&](const UT_FilePath& from, const UT_FilePath& to) {
        if (ops.Rename(from, to) == 0)
            return true;
        errorText_ = UT_Fmt(u"Unable to rename %1$S to %2$S ", from.Wide(), to.Wide());
        return false;
    };
    switch (entry.operation) {
    case kReplace:
    case kUndoUndoReplace:
        if (!rename(entry.first, entry.second))
            return false;
        undo.push_back({kUndoReplace, entry.second, UT_FilePath()});
        return true;
    case kRename:
        if (!rename(entry.first, entry.second))
            return false;
        undo.push_back({kRename, entry.second, entry.first});
        return true;
    case kUndoDelete:
        if (!rename(entry.first, entry.second))
            return false;
        undo.push_back({kDelete, entry.second, UT_FilePath()});
        return true;
    case kUndoReplace: {
        const UT_FilePath moved = FreeName(entry.first, u"new");
        if (!rename(entry.first, moved))
            return false;
        undo.push_back({kUndoUndoReplace, moved, entry.first});
        return true;
    }
    case kDeleteIfPossible: {
        // A file that cannot be moved aside simply stays; nothing is lost either way.
        const UT_FilePath moved = FreeName(entry.first, u"deleted");
        if (ops.Rename(entry.first, moved) == 0)
            undo.push_back({kUndoDelete, moved, entry.first});
        return true;
    }
    default: {
        const UT_FilePath moved = FreeName(entry.first, u"deleted");
        if (!rename(entry.first, moved))
            return false;
        undo.push_back({kUndoDelete, moved, entry.first});
        return true;
    }
    }
}

bool UT_FileTransaction::Commit() {
    if (entries_.empty())
        return true;
    errorText_.clear();
    if (!CheckEntries()) {
        RemoveTemporaries();
        entries_.clear();
        return false;
    }
    std::vector<Entry> undo;
    size_t performed = 0;
    for (; performed < entries_.size(); ++performed) {
        if (!Perform(entries_[performed], undo))
            break;
    }
    if (performed < entries_.size()) {
        // Put every file back, then drop what the save had written or moved aside.
        std::vector<Entry> redo;
        const UT_WString failure = errorText_;
        for (auto it = undo.rbegin(); it != undo.rend(); ++it)
            Perform(*it, redo);
        errorText_ = failure;
        UT_FileOperations& ops = UT_FileOperations::Current();
        for (const Entry& entry : redo) {
            if (entry.operation == kUndoUndoReplace)
                ops.Remove(entry.first);
        }
        for (size_t i = performed; i < entries_.size(); ++i) {
            if (IsTemporaryOf(entries_[i].operation))
                ops.Remove(entries_[i].first);
        }
        entries_.clear();
        return false;
    }
    UT_FileOperations& ops = UT_FileOperations::Current();
    for (const Entry& entry : undo) {
        if (IsTemporaryOf(entry.operation))
            ops.Remove(entry.first);
    }
    entries_.clear();
    return true;
}

void UT_FileTransaction::RemoveTemporaries() {
    UT_FileOperations& ops = UT_FileOperations::Current();
    for (const Entry& entry : entries_) {
        if (IsTemporaryOf(entry.operation))
            ops.Remove(entry.first);
    }
}

void UT_FileTransaction::Rollback() {
    RemoveTemporaries();
    entries_.clear();
}
