#!/usr/bin/env bash
# Builds the fuzz targets with clang and runs each for some seconds, from the corpus that is kept; two
# at a time, unless there is one processor only.
#   scripts/fuzz.sh [SECONDS]
# An input that makes a target fail is left in build/fuzz, as TARGET-crash-... and the like.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
. scripts/setup.sh

seconds=${1:-5}
targets=(record_reader host_values image_file profile hexadecimal)
need_packages "${BUILD_PACKAGES[@]}" clang libclang-rt-14-dev
configure_and_build fuzz "${targets[@]/%/_fuzz}"

# fuzz TARGET SECONDS: a line when it has ended, with its log before that when it has failed.
fuzz() {
  local log=build/fuzz/$1.log found=build/fuzz/found/$1 status=0 verdict="no fault" inputs
  local given=
  [ "$1" != record_reader ] || given=tests/records/given
  mkdir -p "$found"
  "build/fuzz/bin/${1}_fuzz" -max_total_time="$2" -max_len=65536 -timeout=60 -verbosity=0 \
    -print_final_stats=1 -artifact_prefix="build/fuzz/$1-" "$found" "fuzz/corpus/$1" $given \
    >"$log" 2>&1 || status=1
  if [ $status -ne 0 ]; then
    cat "$log"
    verdict="FAILED, see above"
  fi
  inputs=$(sed -n 's/^stat::number_of_executed_units: *//p' "$log")
  echo "$1: ${inputs:-unknown} inputs in $SECONDS s, $verdict"
  return $status
}
export -f fuzz

echo "Fuzzing ${#targets[@]} targets for $seconds s each"
at_once=$(($(nproc) > 1 ? 2 : 1))
printf '%s\n' "${targets[@]}" | xargs -P "$at_once" -I TARGET bash -c "fuzz TARGET $seconds"
