#include "QmsJsonValue.h"

#include "QmsCli.h"

#include <cmath>
#include <cstdlib>
#include <cstring>

namespace {

constexpr int kMaxDepth = 64;

class Reader {
public:
    explicit Reader(std::string_view text) : text_(text) {}

    QmsJsonValue Document() {
        QmsJsonValue value = Value(0);
        Space();
        if (pos_ != text_.size())
            Fail("unexpected text after the end");
        return value;
    }

private:
    [[noreturn]] void Fail(const std::string& what) const {
        throw QmsFailure("bad JSON at byte " + std::to_string(pos_) + ": " + what);
    }
    bool AtEnd() const { return pos_ >= text_.size(); }
    char Peek() const { return text_[pos_]; }
    void Space() {
        while (!AtEnd() && (Peek() == ' ' || Peek() == '\t' || Peek() == '\n' || Peek() == '\r'))
            ++pos_;
    }
    bool Take(char c) {
        Space();
        if (!AtEnd() && Peek() == c) {
            ++pos_;
            return true;
        }
        return false;
    }
    void Expect(char c) {
        if (!Take(c))
            Fail(AtEnd() ? std::string("unexpected end, expected '") + c + "'"
                         : std::string("expected '") + c + "'");
    }
    bool Word(const char* word) {
        const size_t n = std::strlen(word);
        if (text_.substr(pos_, n) != word)
            return false;
        pos_ += n;
        return true;
    }

    QmsJsonValue Value(int depth) {
        if (depth > kMaxDepth)
            Fail("nested too deeply");
        Space();
        if (AtEnd())
            Fail("unexpected end");
        QmsJsonValue v;
        const char c = Peek();
        if (c == '{') {
            ++pos_;
            v.type = QmsJsonValue::Type::Object;
            if (Take('}'))
                return v;
            do {
                Space();
                const size_t at = pos_;
                std::string name = String();
                if (v.Find(name)) {
                    pos_ = at;
                    Fail("duplicate member \"" + name + "\"");
                }
                Expect(':');
                v.values.push_back(Value(depth + 1));
                v.names.push_back(std::move(name));
            } while (Take(','));
            Expect('}');
        } else if (c == '[') {
            ++pos_;
            v.type = QmsJsonValue::Type::Array;
            if (Take(']'))
                return v;
            do
                v.items.push_back(Value(depth + 1));
            while (Take(','));
            Expect(']');
        } else if (c == '"') {
            v.type = QmsJsonValue::Type::String;
            v.text = String();
        } else if (Word("true")) {
            v.type = QmsJsonValue::Type::Bool;
            v.flag = true;
        } else if (Word("false")) {
            v.type = QmsJsonValue::Type::Bool;
        } else if (Word("null")) {
            v.type = QmsJsonValue::Type::Null;
        } else {
            v.type = QmsJsonValue::Type::Number;
            v.number = Number();
        }
        return v;
    }

    // -?(0|[1-9][0-9]*)(.[0-9]+)?([eE][+-]?[0-9]+)?, and finite.
    double Number() {
        const size_t start = pos_;
        const auto digits = [&] {
            const size_t from = pos_;
            while (!AtEnd() && Peek() >= '0' && Peek() <= '9')
                ++pos_;
            return pos_ - from;
        };
        if (!AtEnd() && Peek() == '-')
            ++pos_;
        if (AtEnd() || Peek() < '0' || Peek() > '9') {
            pos_ = start;
            Fail("expected a value");
        }
        if (Peek() == '0')
            ++pos_;
        else
            digits();
        if (!AtEnd() && Peek() == '.') {
            ++pos_;
            if (digits() == 0)
                Fail("expected digits after the decimal point");
        }
        if (!AtEnd() && (Peek() == 'e' || Peek() == 'E')) {
            ++pos_;
            if (!AtEnd() && (Peek() == '+' || Peek() == '-'))
                ++pos_;
            if (digits() == 0)
                Fail("expected digits in the exponent");
        }
        const std::string literal(text_.substr(start, pos_ - start));
        const double value = std::strtod(literal.c_str(), nullptr);
        if (!std::isfinite(value)) {
            pos_ = start;
            Fail("number out of range");
        }
        return value;
    }

    unsigned Hex4() {
        unsigned value = 0;
        for (int i = 0; i < 4; ++i, ++pos_) {
            if (AtEnd())
                Fail("unterminated string");
            const char c = Peek();
            value <<= 4;
            if (c >= '0' && c <= '9')
                value |= unsigned(c - '0');
            else if (c >= 'a' && c <= 'f')
                value |= unsigned(c - 'a' + 10);
            else if (c >= 'A' && c <= 'F')
                value |= unsigned(c - 'A' + 10);
            else
                Fail("bad \\u escape");
        }
        return value;
    }

    static void AppendUtf8(std::string& out, unsigned code) {
        if (code < 0x80) {
            out += char(code);
        } else if (code < 0x800) {
            out += char(0xC0 | (code >> 6));
            out += char(0x80 | (code & 0x3F));
        } else if (code < 0x10000) {
            out += char(0xE0 | (code >> 12));
            out += char(0x80 | ((code >> 6) & 0x3F));
            out += char(0x80 | (code & 0x3F));
        } else {
            out += char(0xF0 | (code >> 18));
            out += char(0x80 | ((code >> 12) & 0x3F));
            out += char(0x80 | ((code >> 6) & 0x3F));
            out += char(0x80 | (code & 0x3F));
        }
    }

    std::string String() {
        if (AtEnd() || Peek() != '"')
            Fail("expected a string");
        ++pos_;
        std::string out;
        for (;;) {
            if (AtEnd())
                Fail("unterminated string");
            const char c = text_[pos_];
            if (c == '"')
                break;
            if (static_cast<unsigned char>(c) < 0x20)
                Fail("control character in a string");
            ++pos_;
            if (c != '\\') {
                out += c;
                continue;
            }
            if (AtEnd())
                Fail("unterminated string");
            const char e = text_[pos_++];
            switch (e) {
            case '"':
            case '\\':
            case '/':
                out += e;
                break;
            case 'b':
                out += '\b';
                break;
            case 'f':
                out += '\f';
                break;
            case 'n':
                out += '\n';
                break;
            case 'r':
                out += '\r';
                break;
            case 't':
                out += '\t';
                break;
            case 'u': {
                unsigned code = Hex4();
                if (code >= 0xD800 && code <= 0xDBFF && text_.substr(pos_, 2) == "\\u") {
                    const size_t back = pos_;
                    pos_ += 2;
                    const unsigned low = Hex4();
                    if (low >= 0xDC00 && low <= 0xDFFF)
                        code = 0x10000 + ((code - 0xD800) << 10) + (low - 0xDC00);
                    else
                        pos_ = back;
                }
                // A lone surrogate cannot be UTF-8: it becomes the replacement character.
                if (code >= 0xD800 && code <= 0xDFFF)
                    code = 0xFFFD;
                AppendUtf8(out, code);
                break;
            }
            default:
                --pos_;
                Fail("unknown escape");
            }
        }
        ++pos_;
        return out;
    }

    std::string_view text_;
    size_t pos_ = 0;
};

} // namespace

QmsJsonValue QmsJsonValue::Parse(std::string_view text) {
    return Reader(text).Document();
}

const QmsJsonValue* QmsJsonValue::Find(std::string_view name) const {
    for (size_t i = 0; i < names.size(); ++i)
        if (names[i] == name)
            return &values[i];
    return nullptr;
}

double QmsJsonNumber(const QmsJsonValue& value, const std::string& what) {
    if (value.type != QmsJsonValue::Type::Number)
        throw QmsFailure(what + " must be a number");
    return value.number;
}

std::vector<double> QmsJsonNumbers(const QmsJsonValue& value, size_t count, const std::string& what) {
    if (value.type != QmsJsonValue::Type::Array || value.items.size() != count)
        throw QmsFailure(what + " must be an array of " + std::to_string(count) + " numbers");
    std::vector<double> numbers;
    for (const QmsJsonValue& item : value.items)
        numbers.push_back(QmsJsonNumber(item, what));
    return numbers;
}
