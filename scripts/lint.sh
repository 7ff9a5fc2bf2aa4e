#!/usr/bin/env bash
# clang-tidy over the sources, with the repository's own list. Needs build/debug to be configured.
#   scripts/lint.sh [FILE...]
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
. scripts/setup.sh
need_packages clang-tidy
[ $# -gt 0 ] || mapfile -t files < <(git ls-files '*.cpp' ':!tests' ':!benchmarks' ':!fuzz')
printf '%s\0' "${@:-${files[@]}}" | xargs -0 -n 4 -P "$(nproc)" clang-tidy -p build/debug --quiet \
  --extra-arg=-Wno-unknown-warning-option
