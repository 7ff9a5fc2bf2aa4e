#!/usr/bin/env bash
# Puts the lists that the code has into the documents: the shared blocks into docs/host.md, the faults of
# the simulated bench into docs/faults.md.
#   scripts/update-docs.sh [--check] FOLDER     that of the programs built from docs/print_*.cpp
# With --check nothing is written; the exit status tells whether the documents are current.
set -euo pipefail
root="$(dirname "${BASH_SOURCE[0]}")/.."
check=
if [ "$1" = --check ]; then
  check=yes
  shift
fi
folder=$1

# update LIST DOCUMENT: between the marks of the list stands what its program prints.
update() {
  local document=$root/$2 text current
  text=$("$folder/print_$1")
  current=$(awk -v list="$1" -v text="$text" '
    $0 == "<!-- " list " end -->" { inside = 0 }
    !inside { print }
    $0 == "<!-- " list " begin -->" { print text; inside = 1 }' "$document")
  if [ -z "$check" ]; then
    printf '%s\n' "$current" >"$document"
  elif [ "$current" != "$(cat "$document")" ]; then
    echo "$2 is not what the code says; run scripts/update-docs.sh"
    exit 1
  fi
}

update blocks docs/host.md
update faults docs/faults.md
