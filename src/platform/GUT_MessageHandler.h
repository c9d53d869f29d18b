#pragma once

#include "core/UT_MessageHandler.h"

#include <functional>

class QWidget;

// The model's messages and questions as message boxes over the main window. Messages
// that the user silences with the box's check box are remembered by number in the
// "AnnoyingMessage" section of the preferences' store; a silenced question answers what
// the user chose when silencing it.
class GUT_MessageHandler : public UT_MessageHandler {
public:
    using TextLookup = std::function<UT_WString(uint32_t id)>;

    static constexpr const char16_t* kDontShowAgain = u"Don't show this message again";

    // `texts` gives the text of a message number.
    explicit GUT_MessageHandler(TextLookup texts);

    // The window the boxes are centred on; nullptr for none.
    void SetParent(QWidget* parent) { parent_ = parent; }

    void Message(int severity, const UT_WString& text) override;
    int Question(int buttons, const UT_WString& text) override;
    void MessageOnce(int severity, const UT_WString& text, bool* silenced) override;
    void MessageOnceById(int severity, uint32_t messageId, bool* silenced) override;
    int QuestionOnceById(int buttons, uint32_t messageId, bool* silenced) override;

    // Title of every box.
    static const char16_t* Title();

private:
    // Shows one box; `silence`, when given, adds the check box and receives its state.
    int Show(int kind, int buttons, const UT_WString& text, bool* silence);
    UT_WString TextOf(uint32_t messageId) const;

    TextLookup texts_;
    QWidget* parent_ = nullptr;
};
