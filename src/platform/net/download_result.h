// SPDX-License-Identifier: Zlib
// The published result codes of downloads. Plain numbers and functions; any thread may use them.
#pragma once

#include "fenlight/platform/types.h"

namespace fenlight::platform {

constexpr HRESULT kDownloaded = 0;
constexpr HRESULT kNoMemory = static_cast<HRESULT>(0x8007000E);
constexpr HRESULT kInvalidAddress = static_cast<HRESULT>(0x800C0002);
constexpr HRESULT kCannotConnect = static_cast<HRESULT>(0x800C0004);
constexpr HRESULT kServerNotFound = static_cast<HRESULT>(0x800C0005);
constexpr HRESULT kPageNotFound = static_cast<HRESULT>(0x800C0006);
constexpr HRESULT kDownloadFailed = static_cast<HRESULT>(0x800C0008);
constexpr HRESULT kLoginRequired = static_cast<HRESULT>(0x800C0009);
constexpr HRESULT kTimedOut = static_cast<HRESULT>(0x800C000B);
constexpr HRESULT kUnknownProtocol = static_cast<HRESULT>(0x800C000D);
constexpr HRESULT kSecurityProblem = static_cast<HRESULT>(0x800C000E);
constexpr HRESULT kRedirectFailed = static_cast<HRESULT>(0x800C0014);
constexpr HRESULT kInvalidCertificate = static_cast<HRESULT>(0x800C0019);

// What libcurl says of a transfer. `status` is the server's last answer, 0 if there was none; `redirects`
// counts those that were followed or refused.
struct TransferEnd {
    int curlCode;
    long status;
    long redirects;
};

HRESULT ResultOfTransfer(const TransferEnd &end) noexcept;

// The result code for one of the codes of GetLastError; 0 for 0.
HRESULT ResultOfError(DWORD error) noexcept;

}  // namespace fenlight::platform
