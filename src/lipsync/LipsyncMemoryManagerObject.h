#pragma once

#include <cstddef>

// The memory of one lip-sync run. Every allocation of the analysis goes to the current
// manager, a chain of heap blocks, so that nothing built during a run needs to be freed
// one by one: dropping the manager frees the chain and resets the state of every module.
// A manager lives on the stack of the driver; at most one is current at a time.
class LipsyncMemoryManagerObject {
public:
    LipsyncMemoryManagerObject();
    ~LipsyncMemoryManagerObject();
    LipsyncMemoryManagerObject(const LipsyncMemoryManagerObject&) = delete;
    LipsyncMemoryManagerObject& operator=(const LipsyncMemoryManagerObject&) = delete;

    // The current manager, or nullptr between runs.
    static LipsyncMemoryManagerObject* Current();

    // One block of n bytes pushed at the head of the chain; nullptr when no memory.
    void* allocate(size_t n);
    void* allocateZeroed(size_t count, size_t size);
    // A new block holding the smaller of the old and new sizes; the old block is freed.
    void* reallocate(void* p, size_t n);
    // Unlinks and frees the block; a pointer not in the chain is freed all the same.
    void release(void* p);

    // Number of blocks in the chain.
    size_t blockCount() const;

private:
    struct Block {
        Block* next;
        size_t size;
    };
    static Block* HeaderOf(void* p);
    Block* head_ = nullptr;
    LipsyncMemoryManagerObject* previous_ = nullptr;
};

// Base of the analysis classes: `new` of a derived object takes memory from the current
// manager, and the object lives until the manager is dropped. Such classes must be
// trivially destructible, since the tear-down runs no destructor.
class LipsyncManaged {
public:
    static void* operator new(size_t n);
    static void* operator new[](size_t n);
    static void operator delete(void* p);
    static void operator delete[](void* p);
};

// Typed helpers over the current manager. They end the analysis through the fatal error
// routine with `what` when memory cannot be had.
void* LipsyncAlloc(size_t bytes, const char* what);
template <class T> T* LipsyncNewArray(size_t count, const char* what) {
    return static_cast<T*>(LipsyncAlloc(count * sizeof(T), what));
}
void LipsyncFree(void* p);
