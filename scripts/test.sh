#!/usr/bin/env bash
# Checks layers and format, builds with the sanitizers and runs every test, the fuzz targets for a few
# seconds, then the tests of the Windows library under Wine.
#   scripts/test.sh [--native] [--extended] [CTEST-OPTION...]
# --native leaves Windows out. --extended runs all of the fault sweep but for the two devices with
# blocks of 16 KiB, of which it runs a part, and more random hosts: ten minutes each, and ten minutes of
# every fuzz target. With options for ctest (for example -R IspFam1) only the tests run that they name,
# no fuzz target, and no Windows.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
. scripts/setup.sh

fuzz_seconds=5
windows=yes
while :; do
  case "${1:-}" in
    --native) windows=no ;;
    --extended)
      fuzz_seconds=600
      export FLIGLAF_EXTENDED=1
      ;;
    *) break ;;
  esac
  shift
done

scripts/check.sh
need_packages "${BUILD_PACKAGES[@]}" "${TEST_PACKAGES[@]}"
configure_and_build debug
if [ $# -gt 0 ]; then
  ctest --test-dir build/debug --output-on-failure --parallel "$(nproc)" "$@"
else
  # The sweep by itself: how much of it has been swept is told.
  ctest --test-dir build/debug --output-on-failure --parallel "$(nproc)" -E FaultSweep
  build/debug/bin/faults_test --gtest_brief=1 --gtest_filter='*FaultSweep*'
  scripts/fuzz.sh "$fuzz_seconds"
  [ $windows = no ] || scripts/windows.sh
fi
