// SPDX-License-Identifier: Zlib
#include <string_view>

#include "fenlight/files.h"

namespace {

// Digits, what groups or parts them in some country's writing, and both blanks.
constexpr std::string_view kNumeric = "0123456789,.- \xA0";

}  // namespace

int32_t Examine(const char *text) noexcept {
    if (text == nullptr) return 1;
    return std::string_view(text).find_first_not_of(kNumeric) == std::string_view::npos ? 0 : 1;
}
