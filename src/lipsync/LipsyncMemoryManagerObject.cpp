#include "lipsync/LipsyncMemoryManagerObject.h"

#include "lipsync/LipsyncExit.h"
#include "lipsync/detail/ModuleState.h"

#include <cstdlib>
#include <cstring>
#include <new>

namespace {
LipsyncMemoryManagerObject* gCurrent = nullptr;
// Refuses single requests beyond this size: no structure of the analysis comes near it.
constexpr size_t kLargestBlock = size_t(1) << 31;
} // namespace

LipsyncMemoryManagerObject::LipsyncMemoryManagerObject() : previous_(gCurrent) {
    gCurrent = this;
}

LipsyncMemoryManagerObject::~LipsyncMemoryManagerObject() {
    LipsyncResetRecogniser();
    LipsyncResetNetwork();
    LipsyncResetFrontEnd();
    while (head_ != nullptr) {
        Block* next = head_->next;
        std::free(head_);
        head_ = next;
    }
    gCurrent = previous_;
}

LipsyncMemoryManagerObject* LipsyncMemoryManagerObject::Current() {
    return gCurrent;
}

LipsyncMemoryManagerObject::Block* LipsyncMemoryManagerObject::HeaderOf(void* p) {
    return reinterpret_cast<Block*>(static_cast<char*>(p) - sizeof(Block));
}

void* LipsyncMemoryManagerObject::allocate(size_t n) {
    if (n > kLargestBlock)
        return nullptr;
    Block* block = static_cast<Block*>(std::malloc(sizeof(Block) + n));
    if (block == nullptr)
        return nullptr;
    block->next = head_;
    block->size = n;
    head_ = block;
    return block + 1;
}

void* LipsyncMemoryManagerObject::allocateZeroed(size_t count, size_t size) {
    if (size != 0 && count > kLargestBlock / size)
        return nullptr;
    void* p = allocate(count * size);
    if (p != nullptr)
        std::memset(p, 0, count * size);
    return p;
}

void* LipsyncMemoryManagerObject::reallocate(void* p, size_t n) {
    void* fresh = allocate(n);
    if (fresh == nullptr || p == nullptr)
        return fresh;
    size_t old = HeaderOf(p)->size;
    std::memcpy(fresh, p, old < n ? old : n);
    release(p);
    return fresh;
}

void LipsyncMemoryManagerObject::release(void* p) {
    if (p == nullptr)
        return;
    Block* target = HeaderOf(p);
    for (Block** link = &head_; *link != nullptr; link = &(*link)->next) {
        if (*link == target) {
            *link = target->next;
            break;
        }
    }
    std::free(target);
}

size_t LipsyncMemoryManagerObject::blockCount() const {
    size_t count = 0;
    for (Block* b = head_; b != nullptr; b = b->next)
        ++count;
    return count;
}

void* LipsyncAlloc(size_t bytes, const char* what) {
    LipsyncMemoryManagerObject* manager = LipsyncMemoryManagerObject::Current();
    void* p = manager != nullptr ? manager->allocateZeroed(1, bytes) : nullptr;
    if (p == nullptr)
        LipsyncFatal(5000, "%s: Cannot allocate %lu bytes", what, static_cast<unsigned long>(bytes));
    return p;
}

void LipsyncFree(void* p) {
    if (LipsyncMemoryManagerObject* manager = LipsyncMemoryManagerObject::Current())
        manager->release(p);
}

void* LipsyncManaged::operator new(size_t n) {
    return LipsyncAlloc(n, "LipsyncManaged");
}
void* LipsyncManaged::operator new[](size_t n) {
    return LipsyncAlloc(n, "LipsyncManaged");
}
void LipsyncManaged::operator delete(void* p) {
    LipsyncFree(p);
}
void LipsyncManaged::operator delete[](void* p) {
    LipsyncFree(p);
}
