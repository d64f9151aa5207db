// SPDX-License-Identifier: Zlib
#include <cstdlib>

#include "fenlight/platform/system.h"
#include "platform/system/failure_point.h"

namespace fenlight::platform {
namespace {

// No machine gives a block of this size; refusing it here keeps sizes that went negative away from malloc,
// which some checking allocators take as a reason to end the program.
constexpr size_t kRefusedSize = size_t{1} << 39;

}  // namespace
}  // namespace fenlight::platform

void *GlobalAlloc(UINT flags, size_t bytes) noexcept {
    using namespace fenlight::platform;
    void *block = nullptr;
    if (!OperationFails(Operation::Memory) && bytes < kRefusedSize) {
        const size_t size = bytes == 0 ? 1 : bytes;
        block = (flags & GMEM_ZEROINIT) != 0 ? std::calloc(1, size) : std::malloc(size);
    }
    if (block == nullptr) SetLastError(ERROR_NOT_ENOUGH_MEMORY);
    return block;
}

void *GlobalFree(void *block) noexcept {
    std::free(block);
    return nullptr;
}
