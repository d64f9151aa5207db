// SPDX-License-Identifier: Zlib
// Passwords come from the terminal or from a file, never from the argument list, which everyone on the
// machine can read.
#pragma once

#include <string>

namespace fenpack {

// Overwritten when it goes.
class Password {
  public:
    Password() = default;
    explicit Password(std::string text) : text_(std::move(text)) {}
    ~Password();
    Password(Password &&) = default;
    Password &operator=(Password &&) = default;

    // 0 for none.
    const char *Text() const { return text_.empty() ? nullptr : text_.c_str(); }

  private:
    std::string text_;
};

// Asks on the terminal, without showing what is typed; twice if `confirm`.
Password AskForPassword(bool confirm);
// The first line of a file.
Password ReadPasswordFile(const std::string &path);

}  // namespace fenpack
