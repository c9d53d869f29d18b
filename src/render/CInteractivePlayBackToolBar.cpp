#include "render/CInteractivePlayBackToolBar.h"

#include "core/UT_Format.h"
#include "render/CInteractivePlaybackControl.h"

CInteractivePlayBackToolBar::CInteractivePlayBackToolBar()
    : buttons_{{CInteractivePlaybackControl::kFirstFrame, u"First Frame"},
               {CInteractivePlaybackControl::kPrevFrame, u"Previous Frame"},
               {CInteractivePlaybackControl::kPlay, u"Play"},
               {CInteractivePlaybackControl::kStop, u"Stop", false},
               {CInteractivePlaybackControl::kNextFrame, u"Next Frame"},
               {CInteractivePlaybackControl::kLastFrame, u"Last Frame"},
               {CInteractivePlaybackControl::kToggleLoop, u"Loop"}},
      text_(UT_Fmt(kTextFormat, UT_Num(1), UT_Num(1), UT_Num(1), UT_Num(1))) {}

const CInteractivePlayBackToolBar::Button* CInteractivePlayBackToolBar::Find(uint32_t command) const {
    for (const Button& button : buttons_)
        if (button.command == command)
            return &button;
    return nullptr;
}

CInteractivePlayBackToolBar::Button* CInteractivePlayBackToolBar::FindButton(uint32_t command) {
    return const_cast<Button*>(Find(command));
}

UT_WString CInteractivePlayBackToolBar::Tip(uint32_t command) const {
    const Button* button = Find(command);
    return button ? UT_WString(button->tip) : UT_WString();
}

bool CInteractivePlayBackToolBar::IsEnabled(uint32_t command) const {
    const Button* button = Find(command);
    return button && button->enabled;
}

bool CInteractivePlayBackToolBar::IsPressed(uint32_t command) const {
    const Button* button = Find(command);
    return button && button->pressed;
}

void CInteractivePlayBackToolBar::EnableButton(uint32_t command, bool enabled) {
    Button* button = FindButton(command);
    if (button && button->enabled != enabled) {
        button->enabled = enabled;
        Changed();
    }
}

void CInteractivePlayBackToolBar::PressButton(uint32_t command, bool pressed) {
    Button* button = FindButton(command);
    if (button && button->pressed != pressed) {
        button->pressed = pressed;
        Changed();
    }
}

void CInteractivePlayBackToolBar::SetFrames(int32_t frame, int32_t sceneLast, int32_t first, int32_t last) {
    UT_WString text = UT_Fmt(kTextFormat, UT_Num(int64_t{frame} + 1), UT_Num(int64_t{sceneLast} + 1),
                             UT_Num(int64_t{first} + 1), UT_Num(int64_t{last} + 1));
    if (text != text_) {
        text_ = std::move(text);
        Changed();
    }
}
