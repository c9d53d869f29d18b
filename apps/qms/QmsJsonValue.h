#pragma once

#include <string>
#include <string_view>
#include <vector>

// A JSON document as the commands read it from their input (curve descriptions, point
// lists). The reader is strict: the grammar of RFC 8259, finite numbers, no duplicate
// member names, at most 64 levels deep. Malformed text throws QmsFailure with the byte
// offset and what was wrong there.
struct QmsJsonValue {
    enum class Type { Null, Bool, Number, String, Array, Object };

    Type type = Type::Null;
    bool flag = false;
    double number = 0.0;
    // A string's value, in UTF-8.
    std::string text;
    std::vector<QmsJsonValue> items;
    // An object's members in the order of the text: names[i] names values[i].
    std::vector<std::string> names;
    std::vector<QmsJsonValue> values;

    static QmsJsonValue Parse(std::string_view text);

    // The member of that name, or null (also when this is not an object).
    const QmsJsonValue* Find(std::string_view name) const;
    bool Is(Type t) const { return type == t; }
};

// The number of `value`, or QmsFailure "`what` must be a number".
double QmsJsonNumber(const QmsJsonValue& value, const std::string& what);
// An array of exactly `count` numbers, or QmsFailure naming `what`.
std::vector<double> QmsJsonNumbers(const QmsJsonValue& value, size_t count, const std::string& what);
