// SPDX-License-Identifier: Zlib
#include "fenlight/internet.h"

#include <array>
#include <atomic>
#include <climits>
#include <cstring>

#include "fenlight/platform/system.h"
#include "internet/probe.h"
#include "platform/net/download.h"

namespace fenlight {
namespace {

// A small page that has been there for decades, on servers all over the world.
constexpr const char *kProbeAddress = "http://www.kernel.org/index.html";
constexpr char kProbeFile[] = "fenlight_itest";

std::atomic<const char *> probeAddress{kProbeAddress};

bool IsProbeAnswered() noexcept {
    std::array<char, PATH_MAX + sizeof kProbeFile> path;
    const DWORD length = GetTempPathA(PATH_MAX, path.data());
    if (length == 0 || length > PATH_MAX) return false;
    std::memcpy(path.data() + length, kProbeFile, sizeof kProbeFile);
    return platform::DownloadToFile(probeAddress.load(std::memory_order_relaxed), path.data()) == 0;
}

}  // namespace

void SetProbeAddress(const char *address) noexcept {
    probeAddress.store(address == nullptr ? kProbeAddress : address, std::memory_order_relaxed);
}

}  // namespace fenlight

int32_t DownloadHttpFile(const char *url, const char *fileName) noexcept {
    return fenlight::platform::DownloadToFile(url, fileName);
}

int32_t IsInternet() noexcept { return fenlight::IsProbeAnswered() ? 1 : 0; }
