#include "lipsync/LipsyncFiles.h"

#include <cstring>
#include <map>

extern const unsigned char kLipsyncModelData[];
extern const std::size_t kLipsyncModelDataSize;

namespace {

constexpr size_t kModelBytes = 15292;
constexpr char kShapes[] = "ABCDEFGX";

std::map<std::string, std::vector<unsigned char>>& Overrides() {
    static std::map<std::string, std::vector<unsigned char>> overrides;
    return overrides;
}

const std::vector<unsigned char>& TextBytes(const std::string& text) {
    static std::map<std::string, std::vector<unsigned char>> cache;
    auto found = cache.find(text);
    if (found == cache.end())
        found = cache.emplace(text, std::vector<unsigned char>(text.begin(), text.end())).first;
    return found->second;
}

} // namespace

bool LipsyncSource::readFloat(float& value) {
    if (size_ - position_ < 4)
        return false;
    uint32_t bits = uint32_t(data_[position_]) | uint32_t(data_[position_ + 1]) << 8 |
                    uint32_t(data_[position_ + 2]) << 16 | uint32_t(data_[position_ + 3]) << 24;
    std::memcpy(&value, &bits, 4);
    position_ += 4;
    return true;
}

bool LipsyncSource::readChar(char& c) {
    if (position_ >= size_)
        return false;
    c = static_cast<char>(data_[position_++]);
    return true;
}

void LipsyncPutFloat(std::vector<unsigned char>& bytes, float value) {
    uint32_t bits;
    std::memcpy(&bits, &value, 4);
    for (int i = 0; i < 4; ++i)
        bytes.push_back(static_cast<unsigned char>(bits >> (8 * i)));
}

const std::string& LipsyncFiles::modelList() {
    static const std::string text = "A\nB\nC\nD\nE\nF\nG\nX\n";
    return text;
}

const std::string& LipsyncFiles::networkText() {
    static const std::string text = "$vsm = A | B | C | D | E | F | G | X;\n(<$vsm>)\n";
    return text;
}

const float (&LipsyncFiles::bigramTable())[10][10] {
    static const float table[10][10] = {
        {0, 0.3f, 0.2389f, 0.3542f, 0.0431f, 0.0208f, 0.0083f, 0.0347f, 0, 0},
        {0.0544f, 0.0219f, 0.3309f, 0.3782f, 0.0452f, 0.0416f, 0.024f, 0.1037f, 0, 0},
        {0.1113f, 0.7218f, 0, 0.0426f, 0.0021f, 0.0239f, 0.0614f, 0.0369f, 0, 0},
        {0.0682f, 0.7929f, 0.0744f, 0, 0.0024f, 0, 0.0456f, 0.0165f, 0, 0},
        {0.0772f, 0.7846f, 0.0488f, 0.0285f, 0, 0, 0.0488f, 0.0122f, 0, 0},
        {0.0891f, 0.7368f, 0.0729f, 0.0445f, 0, 0, 0.0324f, 0.0243f, 0, 0},
        {0.0331f, 0.3785f, 0.2597f, 0.2597f, 0.0193f, 0.011f, 0, 0.0387f, 0, 0},
        {0.0709f, 0.4848f, 0.0213f, 0.0213f, 0.001f, 0, 0.0162f, 0, 0, 0.3846f},
        {0, 0, 0, 0, 0, 0, 0, 1, 0, 0},
        {0, 0, 0, 0, 0, 0, 0, 0, 0, 1},
    };
    return table;
}

std::vector<unsigned char> LipsyncMakeBigram(const std::vector<float>& labels,
                                             const std::vector<float>& values) {
    std::vector<unsigned char> bytes;
    size_t n = labels.size();
    LipsyncPutFloat(bytes, static_cast<float>(n));
    for (size_t row = 0; row < n; ++row) {
        LipsyncPutFloat(bytes, labels[row]);
        for (size_t column = 0; column < n; ++column)
            LipsyncPutFloat(bytes, row * n + column < values.size() ? values[row * n + column] : 0.0f);
    }
    return bytes;
}

const std::vector<unsigned char>& LipsyncFiles::bigramBytes() {
    static const std::vector<unsigned char> bytes = [] {
        std::vector<float> labels = {'A', 'B', 'C', 'D', 'E', 'F', 'G', 'X', -1.0f, -2.0f};
        std::vector<float> values;
        for (const auto& row : bigramTable())
            values.insert(values.end(), std::begin(row), std::end(row));
        return LipsyncMakeBigram(labels, values);
    }();
    return bytes;
}

std::vector<unsigned char> LipsyncFiles::shippedModel(char letter) {
    const char* at = std::strchr(kShapes, letter);
    if (letter == '\0' || at == nullptr || kLipsyncModelDataSize != 8 * kModelBytes)
        return {};
    const unsigned char* begin = kLipsyncModelData + (at - kShapes) * kModelBytes;
    return std::vector<unsigned char>(begin, begin + kModelBytes);
}

bool LipsyncFiles::open(const std::string& name, LipsyncSource& source) {
    auto found = Overrides().find(name);
    if (found != Overrides().end()) {
        source = LipsyncSource(found->second.data(), found->second.size(), name);
        return true;
    }
    const std::vector<unsigned char>* bytes = nullptr;
    if (name == "reclist")
        bytes = &TextBytes(modelList());
    else if (name == "network")
        bytes = &TextBytes(networkText());
    else if (name == "bigram")
        bytes = &bigramBytes();
    if (bytes != nullptr) {
        source = LipsyncSource(bytes->data(), bytes->size(), name);
        return true;
    }
    const char* at = name.size() == 1 ? std::strchr(kShapes, name[0]) : nullptr;
    if (at != nullptr && kLipsyncModelDataSize == 8 * kModelBytes) {
        source = LipsyncSource(kLipsyncModelData + (at - kShapes) * kModelBytes, kModelBytes, name);
        return true;
    }
    source = LipsyncSource();
    return false;
}

void LipsyncFiles::setOverride(const std::string& name, std::vector<unsigned char> bytes) {
    Overrides()[name] = std::move(bytes);
}

void LipsyncFiles::resetOverrides() {
    Overrides().clear();
}
