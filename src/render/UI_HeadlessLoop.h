#pragma once

#include "render/UI_MessageLoop.h"

#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <deque>
#include <mutex>

// A message loop without windows, for the command line and the tests: posted commands go
// to one main target in the order they came, and after each command the target gets idle
// passes, as long as it asks for them, up to a few, before the loop sleeps until the next
// post. (A desktop loop would keep passing while asked; with no screen to keep busy this
// loop does not spin.)
class UI_HeadlessLoop : public UI_MessageLoop {
public:
    static constexpr long kIdlePasses = 4;

    explicit UI_HeadlessLoop(UI_CommandTarget& mainTarget) : target_(mainTarget) {}
    UI_HeadlessLoop(const UI_HeadlessLoop&) = delete;
    UI_HeadlessLoop& operator=(const UI_HeadlessLoop&) = delete;

    void PostCommand(uint32_t commandId) override;

    // Runs commands and idle passes on the calling thread until Quit.
    void Run();
    // Runs every command queued now, each followed by its idle passes; the number run.
    size_t RunPending();
    // Waits for a post, up to `timeout`; true when a command is queued.
    bool WaitForPost(std::chrono::milliseconds timeout);
    // Ends Run after the command that runs now; safe from any thread.
    void Quit();
    bool IsQuitting() const;
    size_t Pending() const;

private:
    // Takes the oldest command; false when none is queued.
    bool Take(uint32_t& commandId);
    void Dispatch(uint32_t commandId);

    UI_CommandTarget& target_;
    mutable std::mutex mutex_;
    std::condition_variable posted_;
    std::deque<uint32_t> queue_;
    bool quit_ = false;
};
