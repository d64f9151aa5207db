// SPDX-License-Identifier: Zlib
#include "password.h"

#include <fcntl.h>
#include <termios.h>
#include <unistd.h>

#include <cstring>
#include <fstream>

#include "failure.h"

namespace fenpack {
namespace {

constexpr size_t kLongestPassword = 1024;

class Terminal {
  public:
    Terminal() : file_(open("/dev/tty", O_RDWR | O_CLOEXEC)) {
        if (file_ < 0 || tcgetattr(file_, &before_) != 0)
            throw Failure("no terminal to ask for the password; --password-file takes it from a file");
        termios hidden = before_;
        // Keys that interrupt arrive as characters, so that nobody is left with a terminal that shows
        // nothing.
        hidden.c_lflag &= static_cast<tcflag_t>(~(ECHO | ISIG));
        tcsetattr(file_, TCSAFLUSH, &hidden);
    }
    ~Terminal() {
        tcsetattr(file_, TCSAFLUSH, &before_);
        close(file_);
    }
    Terminal(const Terminal &) = delete;
    Terminal &operator=(const Terminal &) = delete;

    std::string Ask(const char *question) const {
        Say(question);
        std::string line;
        char character = 0;
        while (read(file_, &character, 1) == 1 && character != '\n') {
            if (character == 3 || character == 28 || character == 26) throw Failure("no password given");
            line += character;
            if (line.size() > kLongestPassword) throw Failure("the password is too long");
        }
        Say("\n");
        return line;
    }

  private:
    void Say(const char *text) const {
        if (write(file_, text, std::strlen(text)) < 0) throw SystemFailure("terminal");
    }

    int file_;
    termios before_{};
};

Password Checked(std::string text) {
    if (text.empty()) throw Failure("the password is empty");
    if (text.find('\0') != std::string::npos) throw Failure("the password holds a zero byte");
    return Password(std::move(text));
}

}  // namespace

Password::~Password() { explicit_bzero(text_.data(), text_.size()); }

Password AskForPassword(bool confirm) {
    const Terminal terminal;
    Password password = Checked(terminal.Ask("Password: "));
    if (confirm) {
        const Password again(terminal.Ask("Once more: "));
        if (again.Text() == nullptr || std::strcmp(password.Text(), again.Text()) != 0)
            throw Failure("the two passwords differ");
    }
    return password;
}

Password ReadPasswordFile(const std::string &path) {
    std::ifstream file(path, std::ios::binary);
    std::string line;
    if (!file || (!std::getline(file, line) && !file.eof())) throw SystemFailure(path);
    if (!line.empty() && line.back() == '\r') line.pop_back();
    if (line.size() > kLongestPassword) throw Failure(path + ": the first line is too long for a password");
    return Checked(std::move(line));
}

}  // namespace fenpack
