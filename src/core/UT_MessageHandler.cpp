#include "core/UT_MessageHandler.h"

namespace {
UT_MessageHandler* g_handler = nullptr;
}

UT_MessageHandler* UT_MessageHandler::Current() {
    return g_handler;
}

UT_MessageHandler* UT_MessageHandler::SetCurrent(UT_MessageHandler* handler) {
    UT_MessageHandler* previous = g_handler;
    g_handler = handler;
    return previous;
}

void UT_MessageHandler::Post(int severity, const UT_WString& text) {
    if (g_handler)
        g_handler->Message(severity, text);
}

int UT_MessageHandler::Ask(int buttons, const UT_WString& text, int defaultAnswer) {
    return g_handler ? g_handler->Question(buttons, text) : defaultAnswer;
}
