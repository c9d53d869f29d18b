#pragma once

#include "core/UT_CountedHandle.h"
#include "core/UT_FilePath.h"
#include "core/UT_String.h"

#include <cstdint>
#include <vector>

// The list of file operations of one save. Files are written under temporary names and
// renamed into place only when all of them are written; a failure restores every file.
// One live instance: users take a counted handle from Get(); when the last handle goes
// the remaining list is committed (unless errors were collected or the stack unwinds).
class UT_FileTransaction {
public:
    using Handle = UT_CountedHandle<UT_FileTransaction>;

    enum Operation : uint32_t {
        kReplace = 1,         // first: temporary new file, second: final name
        kRename = 2,          // rename first to second
        kUndoDelete = 3,      // rename first back to second
        kDelete = 4,          // rename first to a free ".deleted" name; failure is an error
        kUndoUndoReplace = 5, // rename first to second
        kUndoReplace = 6,     // rename first to a free ".new" name
        kDeleteReplaced = 7,  // delete of a file that is being replaced
        kDeleteIfPossible = 8 // like kDelete, a failed rename is no error
    };

    struct Entry {
        uint32_t operation;
        UT_FilePath first;
        UT_FilePath second;
    };

    static Handle Get();
    ~UT_FileTransaction();

    // Registers a new version of `finalPath` and returns the temporary path to write it to.
    UT_FilePath AddReplace(const UT_FilePath& finalPath);
    void AddRename(const UT_FilePath& from, const UT_FilePath& to);
    // kDelete, kDeleteReplaced or kDeleteIfPossible.
    void AddDelete(const UT_FilePath& path, uint32_t operation = kDelete);

    // Performs the list. False, with ErrorText() set, if anything failed; the files are
    // then as they were before. Empties the list either way.
    bool Commit();
    // Drops the list and removes the temporary files written for it.
    void Rollback();

    const std::vector<Entry>& Entries() const { return entries_; }
    const UT_WString& ErrorText() const { return errorText_; }
    bool IsEmpty() const { return entries_.empty(); }

    // The first free name: path + ".suffix", then path + ".1.suffix", ".2.suffix", ...
    // The counter stops at 10,000.
    static UT_FilePath FreeName(const UT_FilePath& path, std::u16string_view suffix);

private:
    bool CheckEntries();
    bool Perform(const Entry& entry, std::vector<Entry>& undo);
    void RemoveTemporaries();

    std::vector<Entry> entries_;
    UT_WString errorText_;
};
