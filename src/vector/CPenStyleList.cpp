#include "vector/CPenStyleList.h"

#include "core/DB_Archive.h"
#include "core/UT_Format.h"

std::unique_ptr<CPenStyleList> CPenStyleList::MakeDefault() {
    static constexpr uint32_t kSizes[5][2] = {{5, 20}, {1, 5}, {3, 12}, {10, 10}, {10, 25}};
    auto list = std::make_unique<CPenStyleList>();
    for (int i = 0; i < 5; ++i)
        list->Insert(kSizes[i][0], kSizes[i][1], CPenStyle::kDefaultSmoothness, UT_Fmt(u"Pen %1$d", UT_Num(i + 1)),
                     -1);
    list->modified_ = false;
    return list;
}

void CPenStyleList::Read(DB_Archive& archive) {
    // A pen takes at least 24 bytes: three u32, the colour id and an empty name.
    const uint32_t count = archive.ReadCount(24);
    std::vector<std::unique_ptr<CPenStyle>> pens;
    pens.reserve(count);
    for (uint32_t i = 0; i < count; ++i) {
        auto pen = std::make_unique<CPenStyle>();
        pen->Read(archive);
        pens.push_back(std::move(pen));
    }
    pens_ = std::move(pens);
    modified_ = false;
}

void CPenStyleList::Write(DB_Archive& archive) {
    archive.WriteCount(pens_.size());
    for (const auto& pen : pens_)
        pen->Write(archive);
}

CPenStyle& CPenStyleList::Insert(uint32_t minimum, uint32_t maximum, uint32_t smoothness, const UT_WString& name,
                                 int index) {
    auto pen = std::make_unique<CPenStyle>(minimum, maximum, smoothness, name);
    CPenStyle& ref = *pen;
    if (index < 0 || static_cast<size_t>(index) >= pens_.size())
        pens_.push_back(std::move(pen));
    else
        pens_.insert(pens_.begin() + index, std::move(pen));
    modified_ = true;
    return ref;
}

void CPenStyleList::Remove(size_t index) {
    if (index < pens_.size()) {
        pens_.erase(pens_.begin() + static_cast<std::ptrdiff_t>(index));
        modified_ = true;
    }
}

int CPenStyleList::Find(const CPenStyle& pen) const {
    for (size_t i = 0; i < pens_.size(); ++i) {
        if (*pens_[i] == pen)
            return static_cast<int>(i);
    }
    return -1;
}
