#!/usr/bin/env bash
# Runs beside the DLLs, on a system with Wine: takes the pictures of the editors into the folder
# pictures.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")"
. ./prefix.sh

mkdir pictures
wine regsvr32 /s fliglaf.dll
wine editor_pictures.exe pictures
wine reg add 'HKCU\Control Panel\Desktop' /v LogPixels /t REG_DWORD /d 144 /f >/dev/null
wineserver -k -w
wine explorer /desktop=small,1024x768 editor_pictures.exe pictures small-screen
wine regsvr32 /s /u fliglaf.dll
ls pictures
