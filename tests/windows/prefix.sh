# A fresh Windows in this folder, without dialogs. Sourced; it ends with the script.
export LANG=C.UTF-8 WINEPREFIX=$PWD/prefix WINEARCH=win32 WINEDEBUG=-all WINEDLLOVERRIDES="mscoree,mshtml="
trap 'wineserver -k || true' EXIT
wineboot -i >/dev/null 2>&1
wineserver -w
# There is no window manager to wait for; Wine draws frames and titles itself.
wine reg add 'HKCU\Software\Wine\X11 Driver' /v Managed /d N /f >/dev/null
