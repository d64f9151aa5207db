// SPDX-License-Identifier: Zlib
#include "platform/net/download.h"

#include <curl/curl.h>

#include <memory>
#include <new>

#include "fenlight/platform/system.h"
#include "platform/net/download_result.h"
#include "platform/net/target_file.h"
#include "platform/system/failure_point.h"
#include "platform/system/suspend_gate.h"

// Versions before this one let TLS write to a closed connection with a signal that ends the program.
static_assert(LIBCURL_VERSION_NUM >= 0x075700, "libcurl 7.87 or newer is needed");

namespace fenlight::platform {
namespace {

constexpr long kMostRedirects = 20;
constexpr const char *kProtocols = "http,https";

template <auto release>
struct FreeWith {
    template <typename Object>
    void operator()(Object *object) const noexcept {
        release(object);
    }
};

using Transfer = std::unique_ptr<CURL, FreeWith<curl_easy_cleanup>>;
using Address = std::unique_ptr<CURLU, FreeWith<curl_url_cleanup>>;
using Headers = std::unique_ptr<curl_slist, FreeWith<curl_slist_free_all>>;

// Once for the process; never undone, because other users of the library in this process may still need it.
bool StartCurl() noexcept {
    static const CURLcode code = curl_global_init(CURL_GLOBAL_DEFAULT);
    return code == CURLE_OK;
}

struct Sink {
    TargetFile file;
    DWORD error = ERROR_SUCCESS;
};

// What it gives is the count of bytes taken; another one than came ends the transfer.
size_t TakeBytes(char *bytes, size_t one, size_t count, void *sink) noexcept {
    auto &target = *static_cast<Sink *>(sink);
    target.error = target.file.Write(bytes, one * count);
    return target.error == ERROR_SUCCESS ? one * count : 0;
}

HRESULT ReadAddress(const char *text, const Address &address) noexcept {
    switch (curl_url_set(address.get(), CURLUPART_URL, text, CURLU_ALLOW_SPACE)) {
        case CURLUE_OK:
            return kDownloaded;
        case CURLUE_UNSUPPORTED_SCHEME:
            return kUnknownProtocol;
        case CURLUE_OUT_OF_MEMORY:
            return kNoMemory;
        default:
            return kInvalidAddress;
    }
}

Headers MakeHeaders() noexcept {
    Headers headers(curl_slist_append(nullptr, "Cache-Control: no-cache"));
    // On success the same list comes back, longer.
    if (headers == nullptr || curl_slist_append(headers.get(), "Pragma: no-cache") == nullptr) return nullptr;
    return headers;
}

class Options {
  public:
    explicit Options(const Transfer &transfer) noexcept : transfer_(transfer.get()) {}

    template <typename Value>
    void Set(CURLoption option, Value value) noexcept {
        if (curl_easy_setopt(transfer_, option, value) != CURLE_OK) areSet_ = false;
    }
    // Only memory can be lacking.
    bool AreSet() const noexcept { return areSet_; }

  private:
    CURL *transfer_;
    bool areSet_ = true;
};

bool PrepareTransfer(const Transfer &transfer, const Patience &patience) noexcept {
    Options options(transfer);
    options.Set(CURLOPT_NOSIGNAL, 1L);
    options.Set(CURLOPT_PROTOCOLS_STR, kProtocols);
    options.Set(CURLOPT_REDIR_PROTOCOLS_STR, kProtocols);
    options.Set(CURLOPT_FOLLOWLOCATION, 1L);
    options.Set(CURLOPT_MAXREDIRS, kMostRedirects);
    options.Set(CURLOPT_FAILONERROR, 1L);
    options.Set(CURLOPT_USERAGENT, "Fenlight/3");
    // The file as it lies on the server: without this header a server may choose to pack it.
    options.Set(CURLOPT_ACCEPT_ENCODING, "identity");
    options.Set(CURLOPT_CONNECTTIMEOUT, patience.connectSeconds);
    options.Set(CURLOPT_LOW_SPEED_LIMIT, 1L);
    options.Set(CURLOPT_LOW_SPEED_TIME, patience.silentSeconds);
    return options.AreSet();
}

HRESULT RunTransfer(const Transfer &transfer, const Sink &sink) noexcept {
    TransferEnd end{};
    {
        const Resting rest;
        end.curlCode = curl_easy_perform(transfer.get());
    }
    if (sink.error != ERROR_SUCCESS) return ResultOfError(sink.error);
    curl_easy_getinfo(transfer.get(), CURLINFO_RESPONSE_CODE, &end.status);
    curl_easy_getinfo(transfer.get(), CURLINFO_REDIRECT_COUNT, &end.redirects);
    return ResultOfTransfer(end);
}

HRESULT Download(const char *text, const char *fileName, const Patience &patience) {
    if (OperationFails(Operation::Download) || !StartCurl()) return kDownloadFailed;
    if (OperationFails(Operation::Memory)) return kNoMemory;
    // The address and the headers must outlive the transfer.
    const Address address(curl_url());
    const Headers headers = MakeHeaders();
    const Transfer transfer(curl_easy_init());
    if (address == nullptr || headers == nullptr || transfer == nullptr) return kNoMemory;
    if (const HRESULT refusal = ReadAddress(text, address); refusal != kDownloaded) return refusal;

    Sink sink;
    if (const DWORD error = sink.file.Open(fileName); error != ERROR_SUCCESS) return ResultOfError(error);
    Options options(transfer);
    options.Set(CURLOPT_CURLU, address.get());
    options.Set(CURLOPT_HTTPHEADER, headers.get());
    options.Set(CURLOPT_WRITEFUNCTION, &TakeBytes);
    options.Set(CURLOPT_WRITEDATA, &sink);
    if (!options.AreSet() || !PrepareTransfer(transfer, patience)) return kNoMemory;
    const HRESULT result = RunTransfer(transfer, sink);
    return result == kDownloaded ? ResultOfError(sink.file.Keep()) : result;
}

}  // namespace

HRESULT DownloadToFile(const char *address, const char *fileName, const Patience &patience) noexcept {
    if (address == nullptr) return kInvalidAddress;
    if (fileName == nullptr) return ResultOfError(ERROR_INVALID_PARAMETER);
    try {
        return Download(address, fileName, patience);
    } catch (const std::bad_alloc &) {
        return kNoMemory;
    }
}

}  // namespace fenlight::platform
