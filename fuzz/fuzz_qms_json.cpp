// Feeds arbitrary bytes to the JSON reader of the qms commands (curve descriptions, point
// lists). Malformed text must surface as QmsFailure and nothing else.
#include "QmsCli.h"
#include "QmsJsonValue.h"

#include <cstddef>
#include <cstdint>
#include <string_view>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    try {
        const QmsJsonValue value =
            QmsJsonValue::Parse(std::string_view(reinterpret_cast<const char*>(data), size));
        // What was read can be walked.
        if (const QmsJsonValue* keys = value.Find("keys"))
            for (const QmsJsonValue& key : keys->items)
                (void)key.Find("x");
    } catch (const QmsFailure&) {
    }
    return 0;
}
