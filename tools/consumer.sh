#!/bin/sh
# SPDX-License-Identifier: Zlib
# Installs a build folder into an empty prefix and builds two small projects against it, one by the CMake package and
# one by pkg-config, and runs the installed program: consumer.sh FOLDER
set -e
folder=$(cd "$1" && pwd)
prefix="$folder/prefix"
rm -rf "$prefix" "$folder/consumer"
cmake -S . -B "$folder" -DCMAKE_INSTALL_PREFIX="$prefix" >/dev/null
cmake --install "$folder" >/dev/null
libraries=$(dirname "$(find "$prefix" -name libfenlight.so)")

cmake -S tests/consumer -B "$folder/consumer" -G Ninja -DCMAKE_PREFIX_PATH="$prefix" >/dev/null
cmake --build "$folder/consumer" >/dev/null
env -u DISPLAY XDG_RUNTIME_DIR="$folder" "$folder/consumer/consumer"

export PKG_CONFIG_PATH="$libraries/pkgconfig"
cc -std=c11 -Wall -Wextra -pedantic -Werror examples/first_sprite.c -o "$folder/consumer/first_sprite" \
  $(pkg-config --cflags --libs fenlight) -Wl,-rpath,"$libraries"
env -u DISPLAY XDG_RUNTIME_DIR="$folder" timeout 120 "$folder/consumer/first_sprite"

printf 'first words, first words again' >"$folder/consumer/words"
"$prefix/bin/fenpack" pack --force "$folder/consumer/words"
"$prefix/bin/fenpack" test "$folder/consumer/words.fpk"
echo "the installed library serves a CMake project and a pkg-config one"
