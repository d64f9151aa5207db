// SPDX-License-Identifier: Zlib
#include <cstdlib>

#include "fenlight/platform/system.h"

int32_t MulDiv(int32_t number, int32_t numerator, int32_t denominator) noexcept {
    if (denominator == 0) return -1;
    const int64_t product = int64_t{number} * numerator;
    const int64_t divisor = std::abs(int64_t{denominator});
    const int64_t magnitude = (std::abs(product) + divisor / 2) / divisor;
    const int64_t result = (product < 0) != (denominator < 0) ? -magnitude : magnitude;
    return result < INT32_MIN || result > INT32_MAX ? -1 : static_cast<int32_t>(result);
}
