// SPDX-License-Identifier: Zlib
// Other processes for the window tests: this program once more, an X server of its own, its tools.
#pragma once

#include <sys/types.h>

#include <string>
#include <vector>

#include "support/picture_check.h"

namespace fenlight::test {

// The program's tests that match the filter, disabled ones too, in a process of their own with these
// variables ("NAME=value") added. Its exit code.
int RunSelf(const std::string &filter, const std::vector<std::string> &variables = {});
// Is this such a process?
bool IsRunBySelf();

// What a command prints on its standard output; empty if it fails.
std::string OutputOf(const std::string &command);
bool IsInstalled(const std::string &program);

// An X server without a screen on a free display. It ends with its last client, or with this.
class XServer {
  public:
    XServer();
    ~XServer();
    XServer(const XServer &) = delete;
    XServer &operator=(const XServer &) = delete;
    const std::string &Display() const { return display_; }  // ":7"; empty if it did not start

  private:
    pid_t process_ = -1;
    std::string display_;
};

// What stands on the screen of $DISPLAY in the window of that name; empty if there is none.
Picture WindowOnScreen(const std::string &name);

}  // namespace fenlight::test
