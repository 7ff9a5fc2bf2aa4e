#!/usr/bin/env bash
# Builds the DLL for 32-bit Windows, with the stand-ins for the programmer's components, and runs its
# tests under Wine.
#   scripts/windows.sh [GTEST-OPTION...]
#   scripts/windows.sh --benchmark         how long the DLL takes to load
#   scripts/windows.sh --pictures          takes the pictures of the editors in docs/pictures
#   scripts/windows.sh --build             builds and checks the DLL, runs nothing
# A 32-bit Wine is set up once, in a root of its own below the user's cache folder; FLIGLAF_WINE_ROOT
# names one that stands already. Needs root for that. Where the machine cannot have it, a line says
# so, and nothing is built.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
. scripts/setup.sh

CROSS_PACKAGES=(g++-mingw-w64-i686-posix mingw-w64-tools googletest)
WINE_PACKAGES=wine32,wine,libwine-dev,xvfb,xauth
export FLIGLAF_WINE_ROOT=${FLIGLAF_WINE_ROOT:-${XDG_CACHE_HOME:-$HOME/.cache}/fliglaf/wine32}

skip() {
  echo "Windows tests skipped: $*"
  exit 0
}

[ "$(id -u)" -eq 0 ] || skip "setting up a root with 32-bit Wine needs root"
need_packages "${BUILD_PACKAGES[@]}" "${CROSS_PACKAGES[@]}"

# The mirror that the machine itself has Debian from; other sources and security updates are no use.
mirror() {
  grep -rhoE '(^URIs:|^deb) +(\[[^]]*\] *)?http[^ ]+' /etc/apt/sources.list /etc/apt/sources.list.d \
    2>/dev/null | grep -oE 'http[^ ]*/debian/?$' | head -n 1
}

# Tried with a program that does nothing but end.
runs_32_bit_programs() {
  local place
  place=$(mktemp -d)
  # shellcheck disable=SC2016
  printf '.globl _start\n_start: movl $1, %%eax\nxorl %%ebx, %%ebx\nint $0x80\n' |
    as --32 -o "$place/end.o" - && ld -m elf_i386 -o "$place/end" "$place/end.o" && "$place/end" 2>/dev/null
  local status=$?
  rm -rf "$place"
  return $status
}

# In the root wine is a link that leads nowhere outside it.
if [ ! -L "$FLIGLAF_WINE_ROOT/usr/bin/wine" ]; then
  runs_32_bit_programs || skip "this machine's kernel runs no 32-bit programs"
  need_packages debootstrap
  new=$FLIGLAF_WINE_ROOT.new
  rm -rf "$new"
  mkdir -p "$new"
  debootstrap --arch=i386 --variant=minbase --include=$WINE_PACKAGES bookworm "$new" \
    "$(mirror)" >"$new.log" 2>&1 || skip "no root with 32-bit Wine could be made: see $new.log"
  mv "$new" "$FLIGLAF_WINE_ROOT"
fi

configure_and_build windows

# What the DLL may weigh, and what it may need of a user's machine.
largest=$((1178 * 1024))  # 1.15 MiB
dll=build/windows/bin/fliglaf.dll
[ "$(stat -c %s $dll)" -le $largest ] || { echo "$dll is larger than $largest bytes"; exit 1; }
foreign=$(i686-w64-mingw32-objdump -p $dll | sed -n 's/.*DLL Name: //p' |
  grep -viE '^(advapi32|gdi32|kernel32|msvcrt|ole32|oleaut32|user32)\.dll$' || true)
[ -z "$foreign" ] || { echo "$dll needs $foreign"; exit 1; }

program=run.sh
case "${1:-}" in
  --build) exit 0 ;;
  --benchmark)
    program=benchmark.sh
    shift
    ;;
  --pictures)
    program=pictures.sh
    shift
    ;;
esac

runs_32_bit_programs || skip "this machine's kernel runs no 32-bit programs; the DLL is built"

# Mounts in a name space of their own, which go with the script. What Wine leaves running must not
# keep the caller's pipe open.
out=$(mktemp)
trap 'rm -f "$out"' EXIT
status=0
unshare --mount bash -s -- "$FLIGLAF_WINE_ROOT" "$program" "$@" >"$out" 2>&1 <<'INSIDE' || status=$?
set -euo pipefail
root=$1
program=$2
shift 2
for folder in proc dev; do
  mountpoint -q "$root/$folder" || mount --rbind "/$folder" "$root/$folder"
done
place=$(mktemp -d -p "$root/tmp" fliglaf.XXXXXX)
trap 'rm -rf "$place"' EXIT
cp -r build/windows/bin/* tests/windows/*.vbs tests/windows/*.sh "$place"
chroot "$root" xvfb-run -a bash "${place#"$root"}/$program" "$@"
[ ! -d "$place/pictures" ] || cp "$place"/pictures/* docs/pictures
INSIDE
cat "$out"
exit "$status"
