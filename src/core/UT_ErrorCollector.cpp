#include "core/UT_ErrorCollector.h"

#include "core/UT_MessageHandler.h"

namespace {
UT_ErrorCollector::Handle g_live;
}

UT_ErrorCollector::Handle UT_ErrorCollector::Get() {
    if (UT_ErrorCollector::Handle live = g_live.Lock())
        return live;
    Handle handle = Handle::Make(new UT_ErrorCollector);
    g_live = handle.Weak();
    return handle;
}

UT_ErrorCollector* UT_ErrorCollector::Live() {
    return g_live.Get();
}

UT_ErrorCollector::~UT_ErrorCollector() {
    const UT_WString text = Report();
    if (!text.empty())
        UT_MessageHandler::Post(UT_MessageHandler::kError, text);
}

void UT_ErrorCollector::SetHeading(const UT_WString& heading) {
    if (hasHeading_)
        return;
    heading_ = heading;
    hasHeading_ = true;
}

void UT_ErrorCollector::Add(const UT_WString& message) {
    messages_.push_back(message);
}

UT_WString UT_ErrorCollector::Report() const {
    if (!hasHeading_ || messages_.empty())
        return UT_WString();
    UT_WString text = heading_ + u"\n\n";
    size_t shown = 0;
    for (const UT_WString& message : messages_) {
        if (shown == 11) {
            text += u"More errors...\n";
            break;
        }
        text += message + u"\n";
        ++shown;
    }
    return text;
}
