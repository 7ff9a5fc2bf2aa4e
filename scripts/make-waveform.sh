#!/usr/bin/env bash
# Regenerates docs/waveform.svg: the first page read of a verify, as the simulated bench dumps it and
# sigrok-cli decodes it.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
. scripts/setup.sh
need_packages "${BUILD_PACKAGES[@]}" sigrok-cli python3
configure_and_build release fliglaf

folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
build/release/bin/fliglaf program isp51-4k examples/blink.hex --chip "$folder/chip" --progress none
build/release/bin/fliglaf verify isp51-4k examples/blink.hex --chip "$folder/chip" --progress none \
  --vcd "$folder/dump"
for line in mosi miso; do
  sigrok-cli -I vcd -i "$folder/dump" --protocol-decoder-samplenum -A spi=$line-data \
    -P spi:clk=sck:mosi=mosi:miso=miso:cs=reset:cs_polarity=active-high >"$folder/$line"
done
# From just before the instruction, 0x30; a sample is 100 ns.
from=$(awk -F- '/: 30$/ { print $1 / 10 - 1.5; exit }' "$folder/mosi")
scripts/draw-waveform.py "$folder/dump" "$from" 44 "to chip=$folder/mosi" "from chip=$folder/miso" \
  >docs/waveform.svg
