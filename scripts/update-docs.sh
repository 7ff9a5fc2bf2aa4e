#!/usr/bin/env bash
# Puts the table of shared blocks, as the code has it, into docs/host.md.
#   scripts/update-docs.sh [--check] PRINT_BLOCKS     the program built from docs/print_blocks.cpp
# With --check nothing is written; the exit status tells whether the document is current.
set -euo pipefail
root="$(dirname "${BASH_SOURCE[0]}")/.."
check=
if [ "$1" = --check ]; then
  check=yes
  shift
fi

document=$root/docs/host.md
current=$(awk -v blocks="$("$1")" '
  /<!-- blocks end -->/ { inside = 0 }
  !inside { print }
  /<!-- blocks begin -->/ { print blocks; inside = 1 }' "$document")
if [ -z "$check" ]; then
  printf '%s\n' "$current" >"$document"
elif [ "$current" != "$(cat "$document")" ]; then
  echo "docs/host.md is not what the code says; run scripts/update-docs.sh"
  exit 1
fi
