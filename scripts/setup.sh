#!/usr/bin/env bash
# Installs what building and testing need, where it is missing (Debian 12). Sourced by the other
# scripts: need_packages PACKAGE...
set -euo pipefail

need_packages() {
  local missing=() package
  for package in "$@"; do
    dpkg-query -W -f='${Status}' "$package" 2>/dev/null | grep -q 'install ok installed' ||
      missing+=("$package")
  done
  [ ${#missing[@]} -eq 0 ] && return 0
  local as_root=()
  [ "$(id -u)" -eq 0 ] || as_root=(sudo)
  echo "Installing ${missing[*]}"
  "${as_root[@]}" apt-get update -q
  "${as_root[@]}" env DEBIAN_FRONTEND=noninteractive apt-get install -q -y \
    --no-install-recommends "${missing[@]}"
}

BUILD_PACKAGES=(g++ cmake ninja-build libcli11-dev libtomlplusplus-dev nlohmann-json3-dev libfmt-dev)
TEST_PACKAGES=(libgtest-dev libgmock-dev libbenchmark-dev srecord sigrok-cli openocd)

# configure_and_build PRESET [TARGET...]: quiet when all goes well.
configure_and_build() {
  local preset=$1
  shift
  [ -f "build/$preset/build.ninja" ] || cmake --preset "$preset"
  cmake --build "build/$preset" --parallel "$(nproc)" ${1:+--target "$@"}
}
