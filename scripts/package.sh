#!/usr/bin/env bash
# Makes build/fliglaf-VERSION-windows.zip: the DLL with its type library and manifest, the command line,
# the simulated programmer, the example.
#   scripts/package.sh
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
. scripts/setup.sh

need_packages zip
scripts/windows.sh --build
version=$(sed -n 's/^project(fliglaf VERSION \([0-9.]*\).*/\1/p' CMakeLists.txt)
name=fliglaf-$version-windows
built=build/windows
[ -f $built/bin/fliglaf.dll ] || { echo "Nothing to pack: the DLL has not been built"; exit 1; }

rm -rf "build/$name" "build/$name.zip"
mkdir -p "build/$name/docs"
cp $built/bin/fliglaf.dll $built/bin/fliglaf.exe $built/bin/fliglaf.library.manifest \
  $built/generated/fliglaf.tlb README.md LICENSE CHANGELOG.md "build/$name"
cp -r $built/bin/simulator $built/bin/examples "build/$name"
cp -r examples/shared_blocks "build/$name/examples"
cp -r docs/*.md docs/pictures "build/$name/docs"
(cd build && zip -q -r "$name.zip" "$name")
rm -rf "build/${name:?}"
echo "build/$name.zip"
