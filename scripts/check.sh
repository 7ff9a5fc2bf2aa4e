#!/usr/bin/env bash
# Checks that need no build: the layers of the source, and its format.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
. scripts/setup.sh
need_packages clang-format python3

scripts/check-layers.py
git ls-files -z '*.cpp' '*.h' | xargs -0 -n 40 -P "$(nproc)" clang-format --dry-run -Werror
