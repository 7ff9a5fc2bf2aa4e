#!/usr/bin/env bash
# Builds with the sanitizers and runs every test.
#   scripts/test.sh [CTEST-OPTION...]      for example: scripts/test.sh -R IspFam1
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
. scripts/setup.sh

need_packages "${BUILD_PACKAGES[@]}" "${TEST_PACKAGES[@]}"
configure_and_build debug
ctest --test-dir build/debug --output-on-failure --parallel "$(nproc)" "$@"
