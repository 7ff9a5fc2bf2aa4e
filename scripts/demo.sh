#!/usr/bin/env bash
# Shows the whole chain at work: a HEX file is programmed into a simulated chip, verified, read back
# and compared.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
. scripts/setup.sh

need_packages "${BUILD_PACKAGES[@]}"
mkdir -p build
configure_and_build release fliglaf >build/demo.log 2>&1 || { cat build/demo.log; exit 1; }

fliglaf=$PWD/build/release/bin/fliglaf
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
cp examples/blink.hex "$folder"
cd "$folder"
show() {
  echo
  echo "\$ fliglaf $*"
  "$fliglaf" "$@"
}

show devices
show program isp51-4k blink.hex --chip bench.chip
show verify isp51-4k blink.hex --chip bench.chip --progress none
show read isp51-4k -o back.hex --chip bench.chip --progress none
show compare isp51-4k back.hex --chip bench.chip --progress none

echo
echo "And with a memory cell that is stuck at 0, the verify says where:"
status=0
show program isp51-4k blink.hex --fault stuck=0x26.1=0 --no-erase --progress none || status=$?
echo "exit status $status"
[ "$status" -eq 1 ]
