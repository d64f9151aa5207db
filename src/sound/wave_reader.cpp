// SPDX-License-Identifier: Zlib
#include "sound/wave_reader.h"

namespace fenlight {
namespace {

constexpr uint32_t FourCharacters(const char (&text)[5]) {
    uint32_t code = 0;
    for (int i = 3; i >= 0; --i) code = code << 8 | static_cast<uint8_t>(text[i]);
    return code;
}

constexpr uint32_t kRiff = FourCharacters("RIFF");
constexpr uint32_t kData = FourCharacters("data");

struct ChunkHeader {
    uint32_t id;
    uint32_t size;
};

struct Chunk {
    ChunkHeader header;
    uint64_t start;  // of the header

    [[nodiscard]] uint64_t Body() const { return start + sizeof header; }
    [[nodiscard]] uint64_t End() const { return Body() + header.size; }
    // Chunks begin at even places.
    [[nodiscard]] uint64_t Next() const { return End() + (header.size & 1); }
};

bool ReadChunk(WaveSource &source, uint64_t start, Chunk &chunk) {
    chunk.start = start;
    return source.Read(start, &chunk.header, sizeof chunk.header);
}

// The first chunk with that id that begins at or behind `start` and before `end`.
bool FindChunk(WaveSource &source, uint32_t id, uint64_t start, uint64_t end, Chunk &chunk) {
    while (start < end && ReadChunk(source, start, chunk)) {
        if (chunk.header.id == id) return true;
        start = chunk.Next();
    }
    return false;
}

}  // namespace

bool FindWave(WaveSource &source, WaveLayout &layout) noexcept {
    constexpr uint64_t kFormTypeBytes = 4;
    Chunk riff{}, format{}, data{};
    if (!FindChunk(source, kRiff, 0, source.Size(), riff)) return false;
    if (!ReadChunk(source, riff.Body() + kFormTypeBytes, format)) return false;
    if (!source.Read(format.Body(), &layout.format, sizeof layout.format)) return false;
    layout.format.cbSize = 0;  // a chunk of 16 bytes has none: what was read belongs to the next chunk
    if (layout.format.wFormatTag != WAVE_FORMAT_PCM) return false;
    if (!FindChunk(source, kData, format.Next(), riff.End(), data)) return false;
    layout.dataOffset = data.Body();
    layout.dataSize = data.header.size;
    return layout.dataSize > 0 && data.End() <= source.Size();
}

}  // namespace fenlight
