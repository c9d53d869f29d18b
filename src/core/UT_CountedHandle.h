#pragma once

#include <cstdint>
#include <utility>

// A small shared handle: a pointer to a control block with a strong count, a weak count
// and the object. The object dies when the strong count reaches 0, the block when the
// weak count does. A handle made with owner = false observes without keeping the object.
template <class T> class UT_CountedHandle {
public:
    UT_CountedHandle() = default;
    static UT_CountedHandle Make(T* object) { return UT_CountedHandle(new Block{1, 1, object}, true); }

    UT_CountedHandle(const UT_CountedHandle& o) : block_(o.block_), owner_(o.owner_) { Acquire(); }
    UT_CountedHandle(UT_CountedHandle&& o) noexcept
        : block_(std::exchange(o.block_, nullptr)), owner_(o.owner_) {}
    UT_CountedHandle& operator=(UT_CountedHandle o) noexcept {
        std::swap(block_, o.block_);
        std::swap(owner_, o.owner_);
        return *this;
    }
    ~UT_CountedHandle() { Reset(); }

    // An observing handle on the same object.
    UT_CountedHandle Weak() const {
        UT_CountedHandle h;
        h.block_ = block_;
        h.owner_ = false;
        h.Acquire();
        return h;
    }
    // An owning handle from an observing one, or an empty handle if the object is gone.
    UT_CountedHandle Lock() const {
        if (!block_ || block_->strong == 0)
            return UT_CountedHandle();
        UT_CountedHandle h;
        h.block_ = block_;
        h.owner_ = true;
        h.Acquire();
        return h;
    }

    void Reset() {
        if (!block_)
            return;
        Block* b = std::exchange(block_, nullptr);
        if (owner_ && --b->strong == 0) {
            T* object = std::exchange(b->object, nullptr);
            delete object;
        }
        if (--b->weak == 0)
            delete b;
    }

    T* Get() const { return block_ && block_->strong > 0 ? block_->object : nullptr; }
    T* operator->() const { return Get(); }
    T& operator*() const { return *Get(); }
    explicit operator bool() const { return Get() != nullptr; }
    int32_t StrongCount() const { return block_ ? block_->strong : 0; }

private:
    struct Block {
        int32_t strong;
        int32_t weak;
        T* object;
    };
    UT_CountedHandle(Block* block, bool owner) : block_(block), owner_(owner) {}
    void Acquire() {
        if (!block_)
            return;
        ++block_->weak;
        if (owner_)
            ++block_->strong;
    }

    Block* block_ = nullptr;
    bool owner_ = true;
};
