// SPDX-License-Identifier: Zlib
// Directories that belong to the user alone, so that files of fixed names in them are safe from other users.
#pragma once

#include <string>

namespace fenlight::platform {

// The directory for temporary files, with a slash at the end; made when missing. Empty if there is none that
// is the user's own and closed to others.
std::string UserTempDirectory();

// The directory for files that only matter while programs run: the session's, or else the temporary one.
std::string UserRuntimeDirectory();

}  // namespace fenlight::platform
