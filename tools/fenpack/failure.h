// SPDX-License-Identifier: Zlib
// Failures that the program reports and ends with.
#pragma once

#include <cerrno>
#include <cstring>
#include <stdexcept>
#include <string>

namespace fenpack {

// The message is for the user, as it stands.
class Failure : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

// Of the last system call.
inline Failure SystemFailure(const std::string &path) { return Failure(path + ": " + std::strerror(errno)); }

}  // namespace fenpack
