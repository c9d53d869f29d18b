#pragma once

#include "core/UT_String.h"

#include <cstdint>
#include <optional>

// Something that handles menu commands: the active view, the document, the main window
// and the application, asked in this order.
class GUT_CommandTarget {
public:
    // How a command shows in the menus.
    struct State {
        bool enabled = true;
        bool checkable = false;
        bool checked = false;
        // Replaces the menu text when set.
        std::optional<UT_WString> text;
    };

    virtual ~GUT_CommandTarget() = default;
    // True when this target handles the command; it then fills `state`.
    virtual bool UpdateCommand(uint32_t id, State& state) = 0;
    // True when this target handled the command.
    virtual bool OnCommand(uint32_t id) = 0;
};
