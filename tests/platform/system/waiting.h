// SPDX-License-Identifier: Zlib
// Waiting for what another thread brings about, with a deadline that only a hanging program reaches.
#pragma once

#include <chrono>
#include <thread>

namespace fenlight::platform {

template <class Condition>
bool BecomesTrue(Condition condition) {
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(60);
    while (!condition()) {
        if (std::chrono::steady_clock::now() > end) return false;
        std::this_thread::yield();
    }
    return true;
}

}  // namespace fenlight::platform
