// SPDX-License-Identifier: Zlib
// A file of containers, one behind the other. What fits into one container makes a file that is nothing but
// that container, as a program would hand it to DePack; longer files are packed piece by piece, which needs
// little memory and shows how far it is.
#pragma once

#include <cstdint>
#include <fstream>
#include <optional>
#include <string>
#include <vector>

namespace fenpack {

using Bytes = std::vector<uint8_t>;

inline constexpr uint64_t kPieceBytes = 4 << 20;
inline constexpr uint64_t kGreatestFile = INT32_MAX;

struct ContainerSizes {
    uint64_t packed;  // with the header
    uint64_t original;
};

class InputFile {
  public:
    // Fails for anything but a plain file.
    explicit InputFile(const std::string &path);

    const std::string &Path() const { return path_; }
    uint64_t Size() const { return size_; }
    uint64_t Position() const { return position_; }
    uint32_t Mode() const { return mode_; }
    Bytes Read(uint64_t count);

  private:
    std::string path_;
    std::ifstream file_;
    uint64_t size_ = 0;
    uint64_t position_ = 0;
    uint32_t mode_ = 0;
};

struct Container {
    ContainerSizes sizes;
    Bytes bytes;
};

// The next container, checked as far as its header goes; nothing at the file's end.
std::optional<Container> ReadContainer(InputFile &file);

// Both fail with the reason.
Bytes PackPiece(const Bytes &piece, const char *password, const std::string &path);
Bytes UnpackContainer(Container &container, const char *password, const std::string &path);

// The sizes of the pieces that a file is packed in: none may be below 2 bytes.
std::vector<uint64_t> PieceSizes(uint64_t fileBytes, bool inOne);

}  // namespace fenpack
