// SPDX-License-Identifier: Zlib
// Sines and cosines of whole degrees in units of 1/1024, as constants: pictures come out the same on every
// machine and with every mathematical library.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

namespace fenlight {

// 1024 * sin(a * 0.017456) and 1024 * cos(a * 0.017456), cut towards zero. A full 1.0 reads 1023, and a
// turned picture is that little smaller than it was.
struct Direction {
    int32_t sine;
    int32_t cosine;
};

// Any whole number of degrees; full turns are taken off.
Direction DirectionOf(int32_t degrees) noexcept;

}  // namespace fenlight
