#include "platform/GUT_MessageHandler.h"

#include "core/PR_Preferences.h"
#include "core/UT_Format.h"
#include "platform/detail/GUT_Qt.h"

#include <QCheckBox>
#include <QMessageBox>
#include <string>

namespace {

constexpr int kQuestionKind = 3;

QMessageBox::Icon IconOf(int kind) {
    switch (kind) {
    case UT_MessageHandler::kError:
        return QMessageBox::Critical;
    case UT_MessageHandler::kWarning:
        return QMessageBox::Warning;
    case UT_MessageHandler::kInformation:
        return QMessageBox::Information;
    default:
        return QMessageBox::Question;
    }
}

QMessageBox::StandardButtons ButtonsOf(int buttons) {
    switch (buttons) {
    case UT_MessageHandler::kYesNo:
        return QMessageBox::Yes | QMessageBox::No;
    case UT_MessageHandler::kYesNoCancel:
        return QMessageBox::Yes | QMessageBox::No | QMessageBox::Cancel;
    case UT_MessageHandler::kRetryCancel:
        return QMessageBox::Retry | QMessageBox::Cancel;
    case UT_MessageHandler::kAbortRetryIgnore:
        return QMessageBox::Abort | QMessageBox::Retry | QMessageBox::Ignore;
    default:
        return QMessageBox::Ok | QMessageBox::Cancel;
    }
}

// A box closed with Escape or the window's close button answers as its safest button.
int AnswerOf(QMessageBox::StandardButton button, int buttons) {
    switch (button) {
    case QMessageBox::Ok:
        return UT_MessageHandler::kOk;
    case QMessageBox::Yes:
        return UT_MessageHandler::kYes;
    case QMessageBox::No:
        return UT_MessageHandler::kNo;
    case QMessageBox::Abort:
        return UT_MessageHandler::kAbort;
    case QMessageBox::Retry:
        return UT_MessageHandler::kRetry;
    case QMessageBox::Ignore:
        return UT_MessageHandler::kIgnore;
    case QMessageBox::Cancel:
        return UT_MessageHandler::kCancel;
    default:
        if (buttons == UT_MessageHandler::kYesNo)
            return UT_MessageHandler::kNo;
        if (buttons == UT_MessageHandler::kAbortRetryIgnore)
            return UT_MessageHandler::kAbort;
        return UT_MessageHandler::kCancel;
    }
}

// What a question answers without being shown, when the user silenced it before the
// program remembered answers.
int PositiveAnswer(int buttons) {
    switch (buttons) {
    case UT_MessageHandler::kYesNo:
    case UT_MessageHandler::kYesNoCancel:
        return UT_MessageHandler::kYes;
    case UT_MessageHandler::kRetryCancel:
        return UT_MessageHandler::kRetry;
    case UT_MessageHandler::kAbortRetryIgnore:
        return UT_MessageHandler::kIgnore;
    default:
        return UT_MessageHandler::kOk;
    }
}

} // namespace

GUT_MessageHandler::GUT_MessageHandler(TextLookup texts) : texts_(std::move(texts)) {}

const char16_t* GUT_MessageHandler::Title() {
    return u"Quilmoor Studio";
}

UT_WString GUT_MessageHandler::TextOf(uint32_t messageId) const {
    UT_WString text = texts_ ? texts_(messageId) : UT_WString();
    return text.empty() ? UT_Fmt(u"Message %d", UT_Num(messageId)) : text;
}

int GUT_MessageHandler::Show(int kind, int buttons, const UT_WString& text, bool* silence) {
    QMessageBox box(
        IconOf(kind), gut::Tr(UT_ToUtf8(Title()).c_str()), gut::Tr(UT_ToUtf8(text).c_str()),
        kind == kQuestionKind ? ButtonsOf(buttons) : QMessageBox::StandardButtons(QMessageBox::Ok), parent_);
    if (silence)
        box.setCheckBox(new QCheckBox(gut::Tr(UT_ToUtf8(kDontShowAgain).c_str())));
    box.exec();
    if (silence)
        *silence = box.checkBox()->isChecked();
    const auto clicked = box.standardButton(box.clickedButton());
    return kind == kQuestionKind ? AnswerOf(clicked, buttons) : kOk;
}

void GUT_MessageHandler::Message(int severity, const UT_WString& text) {
    Show(severity, kOkCancel, text, nullptr);
}

int GUT_MessageHandler::Question(int buttons, const UT_WString& text) {
    return Show(kQuestionKind, buttons, text, nullptr);
}

void GUT_MessageHandler::MessageOnce(int severity, const UT_WString& text, bool* silenced) {
    if (silenced && *silenced)
        return;
    bool checked = false;
    Show(severity, kOkCancel, text, &checked);
    if (silenced && checked)
        *silenced = true;
}

void GUT_MessageHandler::MessageOnceById(int severity, uint32_t messageId, bool* silenced) {
    PR_Preferences& preferences = PR_Preferences::Instance();
    if ((silenced && *silenced) || preferences.IsMessageSilenced(messageId)) {
        if (silenced)
            *silenced = true;
        return;
    }
    bool checked = false;
    Show(severity, kOkCancel, TextOf(messageId), &checked);
    if (!checked)
        return;
    if (silenced)
        *silenced = true;
    preferences.SilenceMessage(messageId);
}

int GUT_MessageHandler::QuestionOnceById(int buttons, uint32_t messageId, bool* silenced) {
    // The answer is kept with the number, one more than its code, so that it reads as set.
    UT_SettingsStore& store = PR_Preferences::Instance().Store();
    const std::string key = std::to_string(messageId);
    const std::optional<int64_t> stored = store.GetInt(PR_Preferences::kAnnoyingMessageSection, key);
    if ((silenced && *silenced) || (stored && *stored != 0)) {
        if (silenced)
            *silenced = true;
        return stored && *stored > 0 && *stored <= kIgnore + 1 ? static_cast<int>(*stored - 1)
                                                               : PositiveAnswer(buttons);
    }
    bool checked = false;
    const int answer = Show(kQuestionKind, buttons, TextOf(messageId), &checked);
    // A cancelled question is not a choice to remember.
    if (!checked || answer == kCancel)
        return answer;
    if (silenced)
        *silenced = true;
    store.SetInt(PR_Preferences::kAnnoyingMessageSection, key, answer + 1);
    store.Flush();
    return answer;
}
