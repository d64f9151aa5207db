# SPDX-License-Identifier: Zlib
# Sourced by run and check: installs what is missing of a list of Debian packages.

build_packages="g++ gcc cmake ninja-build pkg-config libsdl2-dev libgdk-pixbuf-2.0-dev zlib1g-dev liblodepng-dev
  libjpeg62-turbo-dev libcurl4-openssl-dev"
test_packages="libgtest-dev libgmock-dev libbenchmark-dev python3 xvfb x11-apps x11-utils xdotool imagemagick
  libjpeg-turbo-progs xfonts-base"
full_packages="git clang-14 libclang-rt-14-dev clang-tidy-14 clang-format-14"

install_packages() {
  missing=""
  for package in "$@"; do
    case "$(dpkg-query -W -f='${Status}' "$package" 2>/dev/null)" in
      "install ok installed") ;;
      *) missing="$missing $package" ;;
    esac
  done
  [ -n "$missing" ] || return 0
  if ! command -v apt-get >/dev/null 2>&1; then
    echo "Please install with your system's package manager what Debian calls:$missing" >&2
    return 1
  fi
  as_root=""
  [ "$(id -u)" = 0 ] || as_root="sudo"
  echo "Installing:$missing"
  $as_root apt-get update -q >/dev/null 2>&1 || true
  $as_root env DEBIAN_FRONTEND=noninteractive apt-get install -y -q --no-install-recommends $missing >/dev/null || {
    echo "These packages could not be installed:$missing" >&2
    return 1
  }
}
