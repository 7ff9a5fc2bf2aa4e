#!/usr/bin/env bash
# clang-tidy with the repository's own list over what build/debug compiles, tests and benchmarks left
# out. Sources of Windows alone are not among it.
#   scripts/lint.sh [FILE...]
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
. scripts/setup.sh
need_packages "${BUILD_PACKAGES[@]}" "${TEST_PACKAGES[@]}" clang-tidy
[ -f build/debug/build.ninja ] || cmake --preset debug

files=("$@")
[ $# -gt 0 ] || mapfile -t files < <(
  sed -n "s|^ *\"file\": \"$PWD/\(.*\)\",*\$|\1|p" build/debug/compile_commands.json |
    grep -vE '^(tests|benchmarks|fuzz|build)/' | sort -u
)
echo "clang-tidy: ${#files[@]} files"
printf '%s\0' "${files[@]}" | xargs -0 -n 4 -P "$(nproc)" clang-tidy -p build/debug --quiet \
  --extra-arg=-Wno-unknown-warning-option
