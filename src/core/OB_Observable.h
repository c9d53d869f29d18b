#pragma once

#include <algorithm>
#include <vector>

// An observable over an observer interface, an update record and the member of the
// interface that receives it. Observers are not owned and must detach before they die.
// Notify skips the sender, and survives observers that detach themselves or others
// while it runs: a detached observer is not called afterwards.
template <class Interface, class Record, void (Interface::*Member)(const void* sender, const Record& record)>
class OB_Observable {
public:
    virtual ~OB_Observable() = default;

    virtual void Notify(const void* sender, const Record& record) {
        const std::vector<Interface*> snapshot = observers_;
        ++depth_;
        for (Interface* observer : snapshot) {
            if (observer == sender || !IsAttached(observer))
                continue;
            (observer->*Member)(sender, record);
        }
        --depth_;
    }

    void Attach(Interface* observer) {
        if (!IsAttached(observer))
            observers_.push_back(observer);
    }
    void Detach(Interface* observer) { std::erase(observers_, observer); }
    bool IsAttached(const Interface* observer) const {
        return std::find(observers_.begin(), observers_.end(), observer) != observers_.end();
    }
    size_t ObserverCount() const { return observers_.size(); }
    // In the order they were attached.
    const std::vector<Interface*>& Observers() const { return observers_; }
    bool IsNotifying() const { return depth_ > 0; }

private:
    std::vector<Interface*> observers_;
    int depth_ = 0;
};
