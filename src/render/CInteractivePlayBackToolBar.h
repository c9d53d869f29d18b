#pragma once

#include "core/UT_String.h"

#include <cstdint>
#include <vector>

// The model of the playback toolbar: its buttons, each with its command, tip, enabled and
// pressed state, and its line of text. The desktop program draws it; the control of
// playback sets it.
class CInteractivePlayBackToolBar {
public:
    struct Button {
        uint32_t command;
        const char16_t* tip;
        bool enabled = true;
        bool pressed = false;
    };

    static constexpr const char16_t* kTextFormat = u"frame: %d/%d (%d, %d)";

    CInteractivePlayBackToolBar();
    virtual ~CInteractivePlayBackToolBar() = default;

    // First Frame, Previous Frame, Play, Stop, Next Frame, Last Frame, Loop.
    const std::vector<Button>& Buttons() const { return buttons_; }
    // Null for a command without a button.
    const Button* Find(uint32_t command) const;
    // The tip of the command's button; empty without one.
    UT_WString Tip(uint32_t command) const;
    bool IsEnabled(uint32_t command) const;
    bool IsPressed(uint32_t command) const;
    void EnableButton(uint32_t command, bool enabled);
    void PressButton(uint32_t command, bool pressed);

    // The line of text, with frames counted from 1 as the user counts them: the frame shown
    // and the scene's last frame, then the first and last frame that playback covers.
    void SetFrames(int32_t frame, int32_t sceneLast, int32_t first, int32_t last);
    const UT_WString& Text() const { return text_; }

protected:
    // A button or the text changed: the view redraws.
    virtual void Changed() {}

private:
    Button* FindButton(uint32_t command);

    std::vector<Button> buttons_;
    UT_WString text_;
};
