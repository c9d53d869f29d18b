#pragma once

#include "vector/CPenStyle.h"

#include "core/CPersistentObjBase.h"

#include <memory>
#include <vector>

// The project's pens, in the order the pen panel shows them.
class CPenStyleList : public CPersistentObjBase {
public:
    // The list a new project starts with: "Pen 1" to "Pen 5".
    static std::unique_ptr<CPenStyleList> MakeDefault();

    void Read(DB_Archive& archive) override;
    void Write(DB_Archive& archive) override;

    // Inserts at `index`, or at the end when the index is negative or beyond the end.
    CPenStyle& Insert(uint32_t minimum, uint32_t maximum, uint32_t smoothness, const UT_WString& name, int index);
    void Remove(size_t index);
    // Index of the first pen equal to `pen`, or -1.
    int Find(const CPenStyle& pen) const;
    size_t Count() const { return pens_.size(); }
    CPenStyle& At(size_t index) { return *pens_[index]; }
    const CPenStyle& At(size_t index) const { return *pens_[index]; }

    bool IsModified() const { return modified_; }
    void MarkClean() { modified_ = false; }

private:
    std::vector<std::unique_ptr<CPenStyle>> pens_;
    bool modified_ = false;
};
