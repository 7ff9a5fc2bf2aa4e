#!/usr/bin/env bash
# Builds with the sanitizers and runs every test, the fuzz targets for a few seconds, then the tests of
# the Windows library under Wine.
#   scripts/test.sh [--native] [--extended] [CTEST-OPTION...]
# --native leaves Windows out. --extended lets every fuzz target run for a minute. With options for
# ctest (for example -R IspFam1) only the tests run that they name, no fuzz target, and no Windows.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
. scripts/setup.sh

fuzz_seconds=5
windows=yes
while :; do
  case "${1:-}" in
    --native) windows=no ;;
    --extended) fuzz_seconds=60 ;;
    *) break ;;
  esac
  shift
done

need_packages "${BUILD_PACKAGES[@]}" "${TEST_PACKAGES[@]}"
configure_and_build debug
ctest --test-dir build/debug --output-on-failure --parallel "$(nproc)" "$@"
if [ $# -eq 0 ]; then
  scripts/fuzz.sh "$fuzz_seconds"
  [ $windows = no ] || scripts/windows.sh
fi
