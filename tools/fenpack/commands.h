// SPDX-License-Identifier: Zlib
// What the program can do, for one file each. All fail by throwing Failure.
#pragma once

#include <string>

namespace fenpack {

inline constexpr const char *kSuffix = ".fpk";

struct Options {
    std::string output;  // empty: by the input's name
    bool force = false;
    bool inOne = false;
    const char *password = nullptr;
};

void PackFile(const std::string &path, const Options &options);
void UnpackFile(const std::string &path, const Options &options);
// Unpacks into memory only.
void TestFile(const std::string &path, const Options &options);
void ListHeading();
void ListFile(const std::string &path);

}  // namespace fenpack
