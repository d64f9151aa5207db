// SPDX-License-Identifier: Zlib
#include "packing/stream_reader.h"

#include <random>
#include <stdexcept>

namespace fenlight::test {
namespace {

class Reader {
  public:
    Reader(const Bytes &stream, uint64_t room) : stream_(stream), room_(room) {}

    ReadStream Read() {
        Put(NextByte());
        while (ReadItem()) {
        }
        result_.bytesUsed = next_;
        return std::move(result_);
    }

  private:
    unsigned NextByte() { return stream_.at(next_++); }

    unsigned Bit() {
        if (left_ == 0) {
            tag_ = NextByte();
            left_ = 8;
        }
        return tag_ >> --left_ & 1;
    }

    uint64_t Gamma() {
        uint64_t value = 1;
        do {
            value = 2 * value + Bit();
            if (value > uint64_t{1} << 33) throw std::out_of_range("gamma");
        } while (Bit() == 1);
        return value;
    }

    void Put(unsigned byte) {
        if (result_.output.size() == room_) throw std::out_of_range("room");
        result_.output.push_back(static_cast<uint8_t>(byte));
    }

    void Copy(StreamItem::Kind kind, uint64_t offset, uint64_t length) {
        const uint64_t position = result_.output.size();
        if (length > room_ - position) throw std::out_of_range("room");
        result_.items.push_back({kind, position, offset, length});
        if (offset == 0) throw std::out_of_range("offset");
        for (uint64_t i = 0; i < length; ++i) Put(result_.output.at(position + i - offset));
        lastOffset_ = offset;
        lwm_ = 1;
    }

    bool ReadItem() {
        const uint64_t position = result_.output.size();
        if (Bit() == 0) {
            Put(NextByte());
            result_.items.push_back({StreamItem::Literal, position, 0, 1});
            lwm_ = 2;
        } else if (Bit() == 0) {
            ReadLongMatch();
        } else if (Bit() == 0) {
            const unsigned byte = NextByte();
            if (byte / 2 == 0) return false;
            Copy(StreamItem::ShortMatch, byte / 2, 2 + byte % 2);
        } else {
            unsigned distance = 0;
            for (int i = 0; i < 4; ++i) distance = 2 * distance + Bit();
            Put(distance == 0 ? 0 : result_.output.at(position - distance));
            result_.items.push_back({StreamItem::NearByte, position, distance, 1});
            lwm_ = 2;
        }
        return true;
    }

    void ReadLongMatch() {
        const uint64_t high = Gamma() - lwm_;
        if (high == 0) return Copy(StreamItem::LastOffsetMatch, lastOffset_, Gamma());
        const uint64_t offset = (high - 1) * 256 + NextByte();
        uint64_t length = Gamma();
        if (offset <= 127 || offset >= 32000)
            length += 2;
        else if (offset >= 1280)
            length += 1;
        Copy(StreamItem::LongMatch, offset, length);
    }

    const Bytes &stream_;
    uint64_t room_;
    size_t next_ = 0;
    unsigned tag_ = 0;
    unsigned left_ = 0;
    uint64_t lwm_ = 2;
    uint64_t lastOffset_ = 0;
    ReadStream result_;
};

}  // namespace

std::optional<ReadStream> ReadWholeStream(const Bytes &stream, uint64_t room) {
    try {
        return Reader(stream, room).Read();
    } catch (const std::out_of_range &) {
        return std::nullopt;
    }
}

StreamBuilder &StreamBuilder::Bits(const std::string &bits) {
    for (const char bit : bits) {
        if (free_ == 0) {
            tag_ = bytes_.size();
            bytes_.push_back(0);
            free_ = 8;
        }
        --free_;
        if (bit == '1') bytes_[tag_] = static_cast<uint8_t>(bytes_[tag_] + (1 << free_));
    }
    return *this;
}

StreamBuilder &StreamBuilder::Byte(unsigned byte) {
    bytes_.push_back(static_cast<uint8_t>(byte));
    return *this;
}

StreamBuilder &StreamBuilder::Gamma(uint64_t value) {
    std::string digits;
    for (; value > 1; value /= 2) digits.insert(0, value % 2 != 0 ? "11" : "01");
    digits.back() = '0';
    return Bits(digits);
}

StreamBuilder &StreamBuilder::Literals(const Bytes &bytes) {
    for (const uint8_t byte : bytes) Bits("0").Byte(byte);
    return *this;
}

Bytes MakeText(size_t length, uint32_t seed) {
    static const char *const kSyllables[] = {"ka", "lo", "men", "ti", "ur", "sha", "ne", "vor", "il", "da"};
    std::mt19937 random(seed);
    std::vector<std::string> words(300);
    for (std::string &word : words) {
        for (uint32_t i = 1 + random() % 4; i > 0; --i) word += kSyllables[random() % 10];
    }
    std::string text;
    while (text.size() < length) {
        text += words[(random() % 300) * (random() % 300) / 300];
        text += random() % 9 == 0 ? ". " : " ";
    }
    return Bytes(text.begin(), text.begin() + static_cast<ptrdiff_t>(length));
}

Bytes MakeNoise(size_t length, uint32_t seed) {
    std::mt19937 random(seed);
    Bytes noise(length);
    for (uint8_t &byte : noise) byte = static_cast<uint8_t>(random());
    return noise;
}

}  // namespace fenlight::test
