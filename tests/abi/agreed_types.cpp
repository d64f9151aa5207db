// SPDX-License-Identifier: Zlib
// Compiles only if every prototype of both headers is the same.
// clang-format off
#include "fenlight/fenlight.h"
#include AGREED_TYPES
// clang-format on
