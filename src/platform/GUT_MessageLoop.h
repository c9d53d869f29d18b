#pragma once

#include "render/UI_MessageLoop.h"

#include <cstddef>
#include <memory>

// The interface thread's message loop as Qt's event loop. A command posted from any thread
// becomes an event of a receiver that lives on the thread that made the loop, and runs
// there after the commands posted before it. After each command the target gets idle
// passes in the event loop's idle time, as long as it asks for them, up to kIdlePasses:
// a target that always asks (the step of playback while it plays) is served as soon as
// nothing else waits, without keeping a processor busy between two commands.
// Whoever posts must stop before the loop is destroyed.
class GUT_MessageLoop : public UI_MessageLoop {
public:
    static constexpr long kIdlePasses = 4;

    explicit GUT_MessageLoop(UI_CommandTarget& target);
    ~GUT_MessageLoop() override;
    GUT_MessageLoop(const GUT_MessageLoop&) = delete;
    GUT_MessageLoop& operator=(const GUT_MessageLoop&) = delete;

    // Safe from any thread.
    void PostCommand(uint32_t commandId) override;
    // The commands run so far.
    size_t Dispatched() const;

private:
    class Receiver;
    std::unique_ptr<Receiver> receiver_;
};
