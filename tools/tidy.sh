#!/bin/sh
# SPDX-License-Identifier: Zlib
# clang-tidy over the library's sources, with the compile commands of a build folder: tidy.sh FOLDER
# Those may be GCC's, with warnings that clang does not know.
set -e
git ls-files 'src/*.cpp' | xargs -P "$(nproc)" -n 4 clang-tidy-14 -p "$1" --quiet \
  --extra-arg=-Wno-unknown-warning-option
