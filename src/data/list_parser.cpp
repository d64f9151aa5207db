// SPDX-License-Identifier: Zlib
#include "data/list_parser.h"

#include <cstring>

#include "fenlight/lists.h"

namespace fenlight {
namespace {

// A token as it is read from left to right. The last character of a token plays a part of its own, so each
// one waits until the next is seen. Working modulo 2^32 all along gives the low bits of every element width,
// whatever the length of the token, so nothing has to be gathered first.
class Token {
  public:
    void Append(uint8_t character) {
        if (!isEmpty_) TakeLeading(last_);
        last_ = character;
        isEmpty_ = false;
    }
    bool HasValue() const { return !isEmpty_ && last_ != '*'; }
    uint32_t Value() const {
        const uint32_t value = AppendDigit(leading_, last_);
        return isNegative_ ? 0 - value : value;
    }

  private:
    static uint32_t AppendDigit(uint32_t number, uint8_t character) {
        return number * 10 + character - uint32_t{'0'};
    }
    // Whatever stands to the left of a minus sign does not count.
    void TakeLeading(uint8_t character) {
        const bool isMinus = character == '-';
        leading_ = isMinus ? 0 : AppendDigit(leading_, character);
        isNegative_ |= isMinus;
    }

    uint32_t leading_ = 0;
    uint8_t last_ = 0;
    bool isEmpty_ = true;
    bool isNegative_ = false;
};

// Reads one token and moves the text to the comma or zero behind it.
Token ReadToken(const char *&text) {
    Token token;
    for (; *text != 0 && *text != ','; ++text)
        if (*text != ' ') token.Append(static_cast<uint8_t>(*text));
    return token;
}

}  // namespace

template <typename Element>
int32_t WriteList(uint8_t *target, const char *text) noexcept {
    uint8_t *const first = target;
    for (;; ++text) {
        const Token token = ReadToken(text);
        const auto value = static_cast<Element>(token.Value());
        if (token.HasValue()) std::memcpy(target, &value, sizeof value);
        target += sizeof value;
        if (*text == 0) return static_cast<int32_t>((target - first) / static_cast<int64_t>(sizeof value));
    }
}

template int32_t WriteList<uint8_t>(uint8_t *target, const char *text) noexcept;
template int32_t WriteList<uint16_t>(uint8_t *target, const char *text) noexcept;
template int32_t WriteList<uint32_t>(uint8_t *target, const char *text) noexcept;

int32_t DecodeEscapedText(uint8_t *target, const char *text) noexcept {
    uint8_t *const first = target;
    while (*text != 0) {
        int shift = 0;
        if (*text == '!') shift += 100, ++text;
        if (*text == ' ') shift -= 35, ++text;
        if (*text == 0) break;
        *target++ = static_cast<uint8_t>(*text++ + shift);
    }
    return static_cast<int32_t>(target - first);
}

}  // namespace fenlight

using namespace fenlight;

namespace {

template <typename Element>
int32_t SetElements(void *memory, int32_t offset, const char *text) {
    if (memory == nullptr || text == nullptr) return 0;
    return WriteList<Element>(static_cast<uint8_t *>(memory) + offset, text);
}

}  // namespace

int32_t SetBytes(void *memory, int32_t offset, const char *text) noexcept {
    return SetElements<uint8_t>(memory, offset, text);
}

int32_t SetWords(void *memory, int32_t offset, const char *text) noexcept {
    return SetElements<uint16_t>(memory, offset, text);
}

int32_t SetLongs(void *memory, int32_t offset, const char *text) noexcept {
    return SetElements<uint32_t>(memory, offset, text);
}
