#pragma once

#include <cstdint>

// Intrusive reference count for objects held by several owners. A new object has
// no owner; each owner calls AddRef and Release. The last Release deletes it.
class UT_ShareBase {
public:
    UT_ShareBase() = default;
    UT_ShareBase(const UT_ShareBase&) : refs_(0) {}
    UT_ShareBase& operator=(const UT_ShareBase&) { return *this; }
    virtual ~UT_ShareBase() = default;

    void AddRef() const noexcept { ++refs_; }
    // Returns true when this call deleted the object.
    bool Release() const noexcept {
        if (--refs_ == 0) {
            delete this;
            return true;
        }
        return false;
    }
    int32_t RefCount() const noexcept { return refs_; }

private:
    mutable int32_t refs_ = 0;
};

// Owning pointer over a UT_ShareBase object.
template <class T> class UT_SharePtr {
public:
    UT_SharePtr() = default;
    UT_SharePtr(T* p) : p_(p) {
        if (p_)
            p_->AddRef();
    }
    UT_SharePtr(const UT_SharePtr& o) : UT_SharePtr(o.p_) {}
    UT_SharePtr(UT_SharePtr&& o) noexcept : p_(o.p_) { o.p_ = nullptr; }
    ~UT_SharePtr() { reset(); }
    UT_SharePtr& operator=(UT_SharePtr o) noexcept {
        std::swap(p_, o.p_);
        return *this;
    }
    void reset() {
        if (p_)
            p_->Release();
        p_ = nullptr;
    }
    T* get() const { return p_; }
    T* operator->() const { return p_; }
    T& operator*() const { return *p_; }
    explicit operator bool() const { return p_ != nullptr; }
    bool operator==(const UT_SharePtr& o) const { return p_ == o.p_; }

private:
    T* p_ = nullptr;
};
