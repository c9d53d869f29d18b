#include "render/UI_HeadlessLoop.h"

void UI_HeadlessLoop::PostCommand(uint32_t commandId) {
    {
        std::lock_guard<std::mutex> lock(mutex_);
        queue_.push_back(commandId);
    }
    posted_.notify_one();
}

bool UI_HeadlessLoop::Take(uint32_t& commandId) {
    std::lock_guard<std::mutex> lock(mutex_);
    if (queue_.empty())
        return false;
    commandId = queue_.front();
    queue_.pop_front();
    return true;
}

void UI_HeadlessLoop::Dispatch(uint32_t commandId) {
    target_.OnCommand(commandId);
    for (long count = 0; count < kIdlePasses && Pending() == 0 && !IsQuitting(); ++count)
        if (!target_.OnIdle(count))
            break;
}

size_t UI_HeadlessLoop::RunPending() {
    size_t run = 0;
    uint32_t commandId = 0;
    while (!IsQuitting() && Take(commandId)) {
        Dispatch(commandId);
        ++run;
    }
    return run;
}

void UI_HeadlessLoop::Run() {
    for (;;) {
        RunPending();
        std::unique_lock<std::mutex> lock(mutex_);
        posted_.wait(lock, [this] { return quit_ || !queue_.empty(); });
        if (quit_)
            return;
    }
}

bool UI_HeadlessLoop::WaitForPost(std::chrono::milliseconds timeout) {
    std::unique_lock<std::mutex> lock(mutex_);
    return posted_.wait_for(lock, timeout, [this] { return !queue_.empty(); });
}

void UI_HeadlessLoop::Quit() {
    {
        std::lock_guard<std::mutex> lock(mutex_);
        quit_ = true;
    }
    posted_.notify_all();
}

bool UI_HeadlessLoop::IsQuitting() const {
    std::lock_guard<std::mutex> lock(mutex_);
    return quit_;
}

size_t UI_HeadlessLoop::Pending() const {
    std::lock_guard<std::mutex> lock(mutex_);
    return queue_.size();
}
