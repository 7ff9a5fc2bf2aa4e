#!/usr/bin/env bash
# Builds with the sanitizers and runs every test, then the fuzz targets for a few seconds.
#   scripts/test.sh [--extended] [CTEST-OPTION...]
# --extended lets every fuzz target run for a minute. With options for ctest (for example -R IspFam1)
# only the tests run that they name, and no fuzz target.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
. scripts/setup.sh

fuzz_seconds=5
if [ "${1:-}" = --extended ]; then
  fuzz_seconds=60
  shift
fi

need_packages "${BUILD_PACKAGES[@]}" "${TEST_PACKAGES[@]}"
configure_and_build debug
if [ $# -eq 0 ]; then
  scripts/fuzz.sh "$fuzz_seconds"
fi
ctest --test-dir build/debug --output-on-failure --parallel "$(nproc)" "$@"
