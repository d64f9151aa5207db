// SPDX-License-Identifier: Zlib
#include "platform/net/download_result.h"

#include <curl/curl.h>

#include "fenlight/platform/system.h"

namespace fenlight::platform {
namespace {

HRESULT ResultOfStatus(long status) noexcept {
    if (status >= 200 && status < 300) return kDownloaded;
    if (status == 401 || status == 407) return kLoginRequired;
    if (status == 404 || status == 410) return kPageNotFound;
    // A redirect that does not say where to.
    if (status >= 300 && status < 400) return kRedirectFailed;
    return kDownloadFailed;
}

}  // namespace

HRESULT ResultOfTransfer(const TransferEnd &end) noexcept {
    switch (end.curlCode) {
        case CURLE_OK:
        case CURLE_HTTP_RETURNED_ERROR:
            return ResultOfStatus(end.status);
        case CURLE_URL_MALFORMAT:
            return end.redirects > 0 ? kRedirectFailed : kInvalidAddress;
        case CURLE_UNSUPPORTED_PROTOCOL:
            return end.redirects > 0 ? kRedirectFailed : kUnknownProtocol;
        case CURLE_TOO_MANY_REDIRECTS:
            return kRedirectFailed;
        case CURLE_COULDNT_RESOLVE_HOST:
        case CURLE_COULDNT_RESOLVE_PROXY:
            return kServerNotFound;
        case CURLE_COULDNT_CONNECT:
            return kCannotConnect;
        case CURLE_OPERATION_TIMEDOUT:
            return kTimedOut;
        case CURLE_PEER_FAILED_VERIFICATION:
            return kInvalidCertificate;
        case CURLE_SSL_CONNECT_ERROR:
        case CURLE_SSL_CIPHER:
        case CURLE_SSL_CACERT_BADFILE:
            return kSecurityProblem;
        case CURLE_OUT_OF_MEMORY:
            return kNoMemory;
        default:
            return kDownloadFailed;
    }
}

HRESULT ResultOfError(DWORD error) noexcept {
    // Codes of GetLastError stand among the result codes in a family of their own.
    return error == ERROR_SUCCESS ? kDownloaded : static_cast<HRESULT>(0x80070000U | error);
}

}  // namespace fenlight::platform
