// SPDX-License-Identifier: Zlib
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <new>
#include <utility>

#include "fenlight/platform/system.h"
#include "platform/system/failure_point.h"
#include "platform/system/handle_table.h"
#include "platform/system/system_error.h"

namespace fenlight::platform {
namespace {

constexpr DWORD kTruncateExisting = 5;
constexpr DWORD kTooManyOpenFiles = 4;
constexpr DWORD kGeneralFailure = 31;
constexpr DWORD kNegativeSeek = 131;
constexpr DWORD kAlreadyExists = 183;

// One call moves no more than this; the system's own limit lies a page below 2^31.
constexpr size_t kLongestTransfer = size_t{1} << 30;

class Descriptor {
  public:
    explicit Descriptor(int number) noexcept : number_(number) {}
    Descriptor(Descriptor &&other) noexcept : number_(std::exchange(other.number_, -1)) {}
    Descriptor(const Descriptor &) = delete;
    Descriptor &operator=(const Descriptor &) = delete;
    Descriptor &operator=(Descriptor &&) = delete;
    ~Descriptor() {
        if (number_ >= 0) close(number_);
    }
    int Number() const { return number_; }

  private:
    int number_;
};

struct File : HandleObject {
    File(Descriptor &&opened, DWORD granted, bool isPlain) noexcept
        : descriptor(std::move(opened)), access(granted), isRegular(isPlain) {}
    const Descriptor descriptor;
    const DWORD access;
    const bool isRegular;
};

using PinnedFile = Pinned<File, HandleKind::File>;

int OpenFlags(DWORD access) {
    // Without O_NONBLOCK a pipe that nobody writes to would hold the caller.
    const int common = O_CLOEXEC | O_NOCTTY | O_NONBLOCK;
    const bool reads = (access & GENERIC_READ) != 0;
    if ((access & GENERIC_WRITE) != 0) return common | (reads ? O_RDWR : O_WRONLY);
    return common | (reads ? O_RDONLY : O_PATH);
}

int OpenPath(const char *path, int flags) {
    int descriptor = -1;
    do {
        descriptor = open(path, flags, 0666);
    } while (descriptor < 0 && errno == EINTR);
    return descriptor;
}

// Opens what exists, or makes it, and says which of both happened. Another process may make or delete the
// file in between, so the two are tried in turn.
int OpenOrMake(const char *path, int flags, bool &existed) {
    constexpr int kTurns = 16;
    int descriptor = -1;
    for (int turn = 0; turn < kTurns; ++turn) {
        existed = true;
        descriptor = OpenPath(path, flags);
        if (descriptor >= 0 || errno != ENOENT) break;
        existed = false;
        descriptor = OpenPath(path, (flags & ~(O_TRUNC | O_PATH)) | O_CREAT | O_EXCL);
        if (descriptor >= 0 || errno != EEXIST) break;
    }
    return descriptor;
}

int OpenByDisposition(const char *path, DWORD access, DWORD disposition, bool &existed) {
    const int flags = OpenFlags(access);
    existed = false;
    switch (disposition) {
        case CREATE_NEW:
            return OpenPath(path, (flags & ~O_PATH) | O_CREAT | O_EXCL);
        case CREATE_ALWAYS:
            return OpenOrMake(path, (flags & ~O_PATH) | O_TRUNC, existed);
        case OPEN_ALWAYS:
            return OpenOrMake(path, flags, existed);
        case kTruncateExisting:
            return OpenPath(path, flags | O_TRUNC);
        default:
            return OpenPath(path, flags);
    }
}

HANDLE Refuse(DWORD error) {
    SetLastError(error);
    return INVALID_HANDLE_VALUE;
}

HANDLE InsertFile(Descriptor &&descriptor, DWORD access, bool existed) {
    struct stat about {};
    if (fstat(descriptor.Number(), &about) != 0) return Refuse(ErrorFromErrno(errno, nullptr));
    if (S_ISDIR(about.st_mode)) return Refuse(ERROR_ACCESS_DENIED);
    if (!S_ISREG(about.st_mode) && access != 0) (void)fcntl(descriptor.Number(), F_SETFL, 0);
    auto *file = new (std::nothrow) File(std::move(descriptor), access, S_ISREG(about.st_mode));
    if (file == nullptr) return Refuse(ERROR_NOT_ENOUGH_MEMORY);
    const HANDLE handle = InsertHandle(HandleKind::File, file);
    if (handle == 0) return Refuse(kTooManyOpenFiles);
    SetLastError(existed ? kAlreadyExists : ERROR_SUCCESS);
    return handle;
}

bool IsDisposition(DWORD disposition, DWORD access) {
    if (disposition == kTruncateExisting) return (access & GENERIC_WRITE) != 0;
    return disposition >= CREATE_NEW && disposition <= OPEN_ALWAYS;
}

// True if the transfer may begin; else the last error is set.
bool CheckTransfer(const PinnedFile &file, DWORD neededAccess, const void *buffer, DWORD size,
                   const void *overlapped) {
    DWORD error = ERROR_SUCCESS;
    if (!file) {
        error = ERROR_INVALID_HANDLE;
    } else if (overlapped != nullptr || (buffer == nullptr && size != 0)) {
        error = ERROR_INVALID_PARAMETER;
    } else if ((file->access & neededAccess) == 0) {
        error = ERROR_ACCESS_DENIED;
    } else if (OperationFails(Operation::File)) {
        error = kGeneralFailure;
    }
    if (error != ERROR_SUCCESS) SetLastError(error);
    return error == ERROR_SUCCESS;
}

// Calls `transfer(done, size)` until all is through, nothing more comes, or it fails with errno set. A pipe
// or a terminal gives what it has at once; asking it again would wait.
template <class Transfer>
bool TransferAll(DWORD size, bool untilFull, DWORD &done, Transfer transfer) {
    done = 0;
    while (done < size) {
        const ssize_t moved = transfer(done, std::min<size_t>(size - done, kLongestTransfer));
        if (moved < 0 && errno == EINTR) continue;
        if (moved < 0) return false;
        done += static_cast<DWORD>(moved);
        if (moved == 0 || !untilFull) break;
    }
    return true;
}

BOOL TransferResult(bool isDone, DWORD count, DWORD *reported) {
    if (reported != nullptr) *reported = count;
    if (!isDone) SetLastError(ErrorFromErrno(errno, nullptr));
    return isDone ? 1 : 0;
}

DWORD SetLowAndHigh(int64_t value, DWORD *high) {
    if (high != nullptr) *high = static_cast<DWORD>(static_cast<uint64_t>(value) >> 32);
    SetLastError(ERROR_SUCCESS);
    return static_cast<DWORD>(value);
}

DWORD RefusePosition(DWORD error) {
    SetLastError(error);
    return INVALID_SET_FILE_POINTER;
}

int64_t StartOfSeek(int descriptor, DWORD method) {
    struct stat about {};
    if (method == FILE_BEGIN) return 0;
    if (method == FILE_CURRENT) return lseek(descriptor, 0, SEEK_CUR);
    return fstat(descriptor, &about) == 0 ? about.st_size : -1;
}

// Works the position out before it moves anything: one that has no room in the result leaves the file as it
// is.
DWORD MovePosition(const File &file, int64_t distance, LONG *high, DWORD method) {
    const int descriptor = file.descriptor.Number();
    const int64_t start = StartOfSeek(descriptor, method);
    if (start < 0) return RefusePosition(ErrorFromErrno(errno, nullptr));
    int64_t position = 0;
    if (__builtin_add_overflow(start, distance, &position)) return RefusePosition(ERROR_INVALID_PARAMETER);
    if (position < 0) return RefusePosition(kNegativeSeek);
    if (high == nullptr && position > UINT32_MAX) return RefusePosition(ERROR_INVALID_PARAMETER);
    if (lseek(descriptor, position, SEEK_SET) < 0) return RefusePosition(ErrorFromErrno(errno, nullptr));
    return SetLowAndHigh(position, reinterpret_cast<DWORD *>(high));
}

int64_t JoinDistance(LONG low, const LONG *high) {
    if (high == nullptr) return low;
    return static_cast<int64_t>(static_cast<uint64_t>(*high) << 32 | static_cast<DWORD>(low));
}

}  // namespace
}  // namespace fenlight::platform

using namespace fenlight::platform;

HANDLE CreateFileA(const char *fileName, DWORD access, DWORD, void *, DWORD disposition, DWORD,
                   HANDLE) noexcept {
    if (fileName == nullptr || fileName[0] == '\0') return Refuse(ERROR_PATH_NOT_FOUND);
    if (!IsDisposition(disposition, access)) return Refuse(ERROR_INVALID_PARAMETER);
    if (OperationFails(Operation::File)) return Refuse(ERROR_ACCESS_DENIED);
    bool existed = false;
    Descriptor descriptor(OpenByDisposition(fileName, access, disposition, existed));
    if (descriptor.Number() < 0) return Refuse(ErrorFromErrno(errno, fileName));
    return InsertFile(std::move(descriptor), access, existed);
}

BOOL ReadFile(HANDLE file, void *buffer, DWORD size, DWORD *bytesRead, void *overlapped) noexcept {
    if (bytesRead != nullptr) *bytesRead = 0;
    const PinnedFile pinned(file);
    if (!CheckTransfer(pinned, GENERIC_READ, buffer, size, overlapped)) return 0;
    const int descriptor = pinned->descriptor.Number();
    DWORD done = 0;
    const bool isDone = TransferAll(size, pinned->isRegular, done, [=](DWORD offset, size_t length) {
        return read(descriptor, static_cast<char *>(buffer) + offset, length);
    });
    return TransferResult(isDone, done, bytesRead);
}

BOOL WriteFile(HANDLE file, const void *buffer, DWORD size, DWORD *bytesWritten, void *overlapped) noexcept {
    if (bytesWritten != nullptr) *bytesWritten = 0;
    const PinnedFile pinned(file);
    if (!CheckTransfer(pinned, GENERIC_WRITE, buffer, size, overlapped)) return 0;
    const int descriptor = pinned->descriptor.Number();
    DWORD done = 0;
    const bool isDone = TransferAll(size, true, done, [=](DWORD offset, size_t length) {
        return write(descriptor, static_cast<const char *>(buffer) + offset, length);
    });
    return TransferResult(isDone, done, bytesWritten);
}

DWORD SetFilePointer(HANDLE file, LONG distance, LONG *distanceHigh, DWORD method) noexcept {
    const PinnedFile pinned(file);
    if (!pinned) return RefusePosition(ERROR_INVALID_HANDLE);
    if (OperationFails(Operation::File)) return RefusePosition(kGeneralFailure);
    if (method > FILE_END) return RefusePosition(ERROR_INVALID_PARAMETER);
    return MovePosition(*pinned, JoinDistance(distance, distanceHigh), distanceHigh, method);
}

DWORD GetFileSize(HANDLE file, DWORD *sizeHigh) noexcept {
    const PinnedFile pinned(file);
    struct stat about {};
    DWORD error = ERROR_SUCCESS;
    if (!pinned) {
        error = ERROR_INVALID_HANDLE;
    } else if (OperationFails(Operation::File)) {
        error = kGeneralFailure;
    } else if (fstat(pinned->descriptor.Number(), &about) != 0) {
        error = ErrorFromErrno(errno, nullptr);
    } else if (!pinned->isRegular) {
        error = ERROR_INVALID_PARAMETER;
    }
    if (error == ERROR_SUCCESS) return SetLowAndHigh(about.st_size, sizeHigh);
    SetLastError(error);
    return INVALID_FILE_SIZE;
}

BOOL DeleteFileA(const char *fileName) noexcept {
    DWORD error = ERROR_SUCCESS;
    if (fileName == nullptr || fileName[0] == '\0') {
        error = ERROR_PATH_NOT_FOUND;
    } else if (OperationFails(Operation::File)) {
        error = ERROR_ACCESS_DENIED;
    } else if (unlink(fileName) != 0) {
        error = ErrorFromErrno(errno, fileName);
    }
    if (error != ERROR_SUCCESS) SetLastError(error);
    return error == ERROR_SUCCESS ? 1 : 0;
}
