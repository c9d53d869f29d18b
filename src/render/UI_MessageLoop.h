#pragma once

#include <cstdint>

// What receives the commands of the interface thread: menu and toolbar commands, and those
// that other threads post. The main window routes them to its command targets.
class UI_CommandTarget {
public:
    virtual ~UI_CommandTarget() = default;
    // False when this target does not handle `commandId`.
    virtual bool OnCommand(uint32_t commandId) = 0;
    // Idle processing after the queue ran empty; `count` counts the passes since the last
    // command. True asks for another pass.
    virtual bool OnIdle(long count) {
        (void)count;
        return false;
    }
};

// The interface thread's message loop, as far as other threads reach it: the one thing
// they may do is post a command, which then runs on the interface thread after the
// commands posted before it. The desktop program's main loop implements it, and
// UI_HeadlessLoop does for the command line and the tests.
class UI_MessageLoop {
public:
    virtual ~UI_MessageLoop() = default;
    // Safe from any thread.
    virtual void PostCommand(uint32_t commandId) = 0;
};
