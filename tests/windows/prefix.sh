# A fresh Windows in this folder, without dialogs. Sourced; it ends with the script.
export LANG=C.UTF-8 WINEPREFIX=$PWD/prefix WINEARCH=win32 WINEDEBUG=-all WINEDLLOVERRIDES="mscoree,mshtml="
trap 'wineserver -k || true' EXIT
wineboot -i >/dev/null 2>&1
wineserver -w
