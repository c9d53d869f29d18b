#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

// An input stream over the bytes of one in-memory file. Numbers are little-endian.
class LipsyncSource {
public:
    LipsyncSource() = default;
    LipsyncSource(const unsigned char* data, size_t size, std::string name)
        : data_(data), size_(size), name_(std::move(name)) {}

    bool isOpen() const { return data_ != nullptr; }
    const std::string& name() const { return name_; }
    bool atEnd() const { return position_ >= size_; }
    size_t remaining() const { return size_ - position_; }
    // Reads one 32-bit float; false at the end of the data.
    bool readFloat(float& value);
    // Reads one byte of a text file; false at the end of the data.
    bool readChar(char& c);

private:
    const unsigned char* data_ = nullptr;
    size_t size_ = 0;
    size_t position_ = 0;
    std::string name_;
};

// The definitions of the recogniser live in the program, reached by name:
// "reclist", "network", "bigram" and one model per mouth shape, "A" to "G" and "X".
// Tests and the training tool may put other contents in place of any of them.
class LipsyncFiles {
public:
    // Opens `name`; an unknown name leaves the source closed and returns false.
    static bool open(const std::string& name, LipsyncSource& source);

    // Replaces (or adds) the file `name` until resetOverrides.
    static void setOverride(const std::string& name, std::vector<unsigned char> bytes);
    static void resetOverrides();

    // The shipped files.
    static const std::string& modelList();
    static const std::string& networkText();
    static const std::vector<unsigned char>& bigramBytes();
    // The bigram of mouth shapes, rows and columns A..G, X, ENTER, EXIT.
    static const float (&bigramTable())[10][10];
    // The shipped model of one shape, or an empty vector when the name has none.
    static std::vector<unsigned char> shippedModel(char letter);
};

// Bytes of a bigram file of n names: `labels` (letter code, -1 ENTER, -2 EXIT) and
// the n x n probabilities row by row.
std::vector<unsigned char> LipsyncMakeBigram(const std::vector<float>& labels,
                                             const std::vector<float>& values);

// Appends a float in little-endian order.
void LipsyncPutFloat(std::vector<unsigned char>& bytes, float value);
