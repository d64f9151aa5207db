// SPDX-License-Identifier: Zlib
#include "container_file.h"

#include <fenlight/compression.h>
#include <sys/stat.h>

#include <algorithm>
#include <cstring>

#include "failure.h"

namespace fenpack {
namespace {

constexpr uint64_t kHeaderBytes = 24;
// One container keeps whole what a program might load in one go.
constexpr uint64_t kGreatestSingle = 4 * kPieceBytes;

uint32_t Field(const Bytes &container, size_t index) {
    uint32_t value;
    std::memcpy(&value, &container[4 * index], sizeof value);
    return value;
}

bool IsPlausible(const Bytes &header, uint64_t bytesLeft) {
    const uint64_t packed = Field(header, 0);
    const uint64_t headerBytes = Field(header, 1);
    const uint64_t original = Field(header, 4);
    return headerBytes >= kHeaderBytes && headerBytes + Field(header, 2) == packed && packed <= bytesLeft &&
           original >= 2 && original <= kGreatestFile;
}

}  // namespace

InputFile::InputFile(const std::string &path) : path_(path) {
    struct stat about;
    if (stat(path.c_str(), &about) != 0) throw SystemFailure(path);
    if (!S_ISREG(about.st_mode)) throw Failure(path + ": not a plain file");
    file_.open(path, std::ios::binary);
    if (!file_) throw SystemFailure(path);
    size_ = static_cast<uint64_t>(about.st_size);
    mode_ = about.st_mode & 0777;
}

Bytes InputFile::Read(uint64_t count) {
    Bytes bytes(std::min(count, size_ - position_));
    file_.read(reinterpret_cast<char *>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
    if (static_cast<size_t>(file_.gcount()) != bytes.size()) throw Failure(path_ + ": could not be read");
    position_ += bytes.size();
    return bytes;
}

std::optional<Container> ReadContainer(InputFile &file) {
    const uint64_t bytesLeft = file.Size() - file.Position();
    if (bytesLeft == 0 && file.Position() > 0) return std::nullopt;
    Container container;
    container.bytes = file.Read(kHeaderBytes);
    if (container.bytes.size() < kHeaderBytes || !IsPlausible(container.bytes, bytesLeft))
        throw Failure(file.Path() + ": no container, or a damaged one");
    container.sizes = {Field(container.bytes, 0), Field(container.bytes, 4)};
    const Bytes stream = file.Read(container.sizes.packed - kHeaderBytes);
    container.bytes.insert(container.bytes.end(), stream.begin(), stream.end());
    return container;
}

Bytes PackPiece(const Bytes &piece, const char *password, const std::string &path) {
    Bytes container(piece.size() + piece.size() / 8 + 64 + kHeaderBytes);
    const int32_t size = Pack(piece.data(), container.data(), static_cast<int32_t>(piece.size()), password);
    if (size <= 0) throw Failure(path + ": not enough memory, or too large for one container");
    container.resize(static_cast<size_t>(size));
    return container;
}

Bytes UnpackContainer(Container &container, const char *password, const std::string &path) {
    Bytes original(container.sizes.original);
    if (DePack(container.bytes.data(), original.data(), password) == 0)
        throw Failure(path + (password == nullptr ? ": damaged, or it needs a password"
                                                  : ": damaged, or the password is wrong"));
    return original;
}

std::vector<uint64_t> PieceSizes(uint64_t fileBytes, bool inOne) {
    if (inOne || fileBytes <= kGreatestSingle) return {fileBytes};
    std::vector<uint64_t> sizes(fileBytes / kPieceBytes, kPieceBytes);
    const uint64_t rest = fileBytes % kPieceBytes;
    if (rest == 1)
        ++sizes.back();
    else if (rest > 1)
        sizes.push_back(rest);
    return sizes;
}

}  // namespace fenpack
