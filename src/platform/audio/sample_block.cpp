// SPDX-License-Identifier: Zlib
#include "platform/audio/sample_block.h"

#include <cstring>
#include <new>

#include "fenlight/platform/system.h"

namespace fenlight::platform {

bool IsPlayable(const WAVEFORMATEX &format) noexcept {
    const uint32_t bits = format.wBitsPerSample;
    return format.wFormatTag == WAVE_FORMAT_PCM && (format.nChannels == 1 || format.nChannels == 2) &&
           (bits == 8 || bits == 16 || bits == 24 || bits == 32) && format.nSamplesPerSec != 0 &&
           format.nBlockAlign == format.nChannels * bits / 8;
}

SampleBlock *SampleBlock::Create(const WAVEFORMATEX &format, uint32_t byteCount) noexcept {
    auto *bytes = static_cast<uint8_t *>(GlobalAlloc(GMEM_ZEROINIT, byteCount));
    if (bytes == nullptr) return nullptr;
    auto *block = new (std::nothrow) SampleBlock(format, bytes, byteCount);
    if (block == nullptr) {
        GlobalFree(bytes);
        return nullptr;
    }
    if (const uint8_t silent = block->SilentByte(); silent != 0) std::memset(bytes, silent, byteCount);
    return block;
}

void SampleBlock::DropReference() noexcept {
    if (references_.fetch_sub(1, std::memory_order_acq_rel) == 1) delete this;
}

SampleBlock::~SampleBlock() { GlobalFree(bytes_); }

}  // namespace fenlight::platform
