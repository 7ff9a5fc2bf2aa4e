#!/usr/bin/env bash
# Builds the fuzz targets with clang and runs each for some seconds, from the corpus that is kept.
#   scripts/fuzz.sh [SECONDS]
# An input that makes a target fail is left in build/fuzz.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
. scripts/setup.sh

need_packages "${BUILD_PACKAGES[@]}" clang libclang-rt-14-dev
targets=(record_reader host_values image_file profile hexadecimal)
configure_and_build fuzz "${targets[@]/%/_fuzz}"
for target in "${targets[@]}"; do
  found=build/fuzz/found/$target
  mkdir -p "$found"
  echo "Fuzzing $target for ${1:-5} s"
  "build/fuzz/bin/${target}_fuzz" -max_total_time="${1:-5}" -max_len=65536 -timeout=10 \
    -artifact_prefix=build/fuzz/ -verbosity=0 "$found" "fuzz/corpus/$target" \
    >"build/fuzz/$target.log" 2>&1 || { cat "build/fuzz/$target.log"; exit 1; }
done
