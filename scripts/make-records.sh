#!/usr/bin/env bash
# Regenerates the run records under tests/records on the simulated bench. Read what changed, call by
# call, before you keep it: a record is the exact traffic that the library is held to.
#   scripts/make-records.sh [FOLDER]
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
. scripts/setup.sh
records=$(realpath "${1:-tests/records}")
devices=$PWD/tests/records/devices
fliglaf=$PWD/build/release/bin/fliglaf
configure_and_build release fliglaf

folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
cd "$folder"

# record NAME COMMAND DEVICE ARGUMENT...: the command may fail, the record is what counts.
record() {
  local name=$1
  shift
  "$fliglaf" "$@" --devices "$devices" --progress none --record "$records/$name.run" >/dev/null 2>&1 || true
  "$fliglaf" replay "$records/$name.run"
}

# An image of 256 bytes in which every byte is another, and one that differs from it in three.
for ((i = 0; i < 256; i++)); do printf "\\x$(printf %02x $(((i * 7 + 1) % 256)))"; done >image.bin
{ head -c 16 image.bin; printf '\x00\x00\x00'; tail -c +20 image.bin; } >other.bin

record f1_program_with_erase program isp51-tiny image.bin --chip c
record f1_read read isp51-tiny -o read.bin --chip c
record f1_verify verify isp51-tiny image.bin --chip c
record f1_verify_fails verify isp51-tiny other.bin --chip c
record f1_compare_three_differences compare isp51-tiny other.bin --chip c
record f1_blank_fails blank isp51-tiny --chip c
record f1_lock_1 lock isp51-tiny 1 --chip c
record f1_lock_2 lock isp51-tiny 2 --chip c
record f1_lock_3 lock isp51-tiny 3 --chip c
record f1_erase erase isp51-tiny --chip c --no-signature
record f1_program_both_supplies program isp51-tiny image.bin --no-erase --margin 2 --no-signature
record f1_read_never_answers read isp51-tiny -o none.bin --fault usb-timeout
record f1_read_fails_at_a_call read isp51-tiny -o none.bin --fault call=FlushQueue
record f1_blank_wrong_signature blank isp51-tiny --fault no-chip --on-mismatch retry
record no_programmer blank isp51-tiny --fault no-programmer
record no_adapter blank isp51-tiny --fault no-adapter

# The parallel engine on the same part, and on parts with configuration words.
record parallel_program_both_supplies program isp51-tiny image.bin --chip p --margin 2 --parallel
record parallel_read read isp51-tiny -o read.bin --chip p --parallel
record parallel_verify_fails verify isp51-tiny other.bin --chip p --parallel
record parallel_compare_three_differences compare isp51-tiny other.bin --chip p --parallel
record parallel_blank_fails blank isp51-tiny --chip p --parallel
record parallel_wrong_signature blank isp51-tiny --fault no-chip --on-mismatch abort --parallel
record parallel_no_programmer blank isp51-tiny --fault no-programmer --parallel
for device in config-word-8 config-word-18 config-word-28 config-word-40; do
  record "parallel_$device" config "$device" low=12 high=2A --parallel
done
record parallel_config-words-18 config config-words-18 low0=12 high0=2A low1=FE high1=15 --parallel

# The other serial families: the same operations on each.
head -c 48 image.bin >fam2.bin
head -c 64 image.bin >fam3.bin
for family in fam13 fam13-one-fuse fam14 fam15; do head -c 64 image.bin >$family.bin; done
head -c 16 other.bin >data.bin
printf '\x5A\xA5' >fam3-data.bin

# family NAME DATA-OPTION...: NAME is the device without "-tiny".
family() {
  local name=$1 device=$1-tiny prefix=${1/fam/f}
  shift
  record "${prefix}_program_with_erase" program "$device" "$name.bin" "$@" --chip "$name.chip"
  record "${prefix}_read" read "$device" -o read.bin --chip "$name.chip"
  "$fliglaf" read "$device" --image other.image.bin --devices "$devices" --chip "$name.chip" \
    --progress none >/dev/null
  printf '\x00' | dd of=other.image.bin conv=notrunc bs=1 seek=9 status=none
  record "${prefix}_verify_fails" verify "$device" --image other.image.bin --chip "$name.chip"
  record "${prefix}_compare" compare "$device" --image other.image.bin --chip "$name.chip"
  record "${prefix}_blank_fails" blank "$device" --chip "$name.chip"
}

family fam2 --eeprom data.bin
family fam3 --eeprom fam3-data.bin
family fam13 --eeprom data.bin
family fam13-one-fuse --eeprom data.bin
family fam14 --eeprom data.bin
family fam15
for level in 1 2 3; do record "f2_lock_$level" lock fam2-tiny $level --chip fam2.chip; done
for level in 1 2; do record "f3_lock_$level" lock fam3-tiny $level --chip fam3.chip; done
record f13_config config fam13-tiny low=E2 high=DF lock=FC --chip fam13.chip
record f13-one-fuse_config config fam13-one-fuse-tiny low=5A lock=FC --chip fam13-one-fuse.chip
record f14_config config fam14-tiny low=E2 high=DF extended=F9 lock=FC --chip fam14.chip
record f15_config config fam15-tiny fuse=0A lock=02 --chip fam15.chip
record f15_wrong_signature signature fam15-tiny --fault no-chip --on-mismatch abort

# JTAG. What touches the flash of families 4 to 7 does so in blocks of 16 KiB, too long to be read.
for family in fam4 fam5 fam6 fam7; do
  record "${family/fam/f}_signature" signature $family-small --chip $family.chip
done
record f4_config config fam4-small low=E1 high=99 lock=FC --chip fam4.chip
for family in fam5 fam6 fam7; do
  record "${family/fam/f}_config" config $family-small low=E1 high=99 extended=FD lock=FC --chip $family.chip
done
for family in fam8 fam9 fam10 fam11; do head -c 14 image.bin >$family.bin; done
head -c 8 other.bin >data.bin
for family in fam8 fam9 fam10; do
  family $family --eeprom data.bin
  record "${family/fam/f}_config" config $family-tiny write-lock=F0 read-lock=FC --chip $family.chip
done
family fam11 --eeprom data.bin
# The two lines. A block of 16 KiB is read anyhow, whatever the size of the part.
for family in fam12 fam16; do
  head -c 23 image.bin >$family.bin
  family $family
  record "${family/fam/f}_lock" config $family-tiny lock=FE --chip $family.chip
done
record f12_program_both_supplies program fam12-tiny fam12.bin --no-erase --margin 2 --no-signature
record f10_program_both_supplies program fam10-tiny fam10.bin --no-erase --margin 2 --no-signature \
  --fault stuck=0.1=1
