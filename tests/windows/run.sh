#!/usr/bin/env bash
# Runs beside the DLLs, on a system with Wine: registers them, tests them, takes them back.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")"
. ./prefix.sh

fail() {
  echo "FAILED: $*"
  exit 1
}
in_registry() { wine reg query "$1" >/dev/null 2>&1; }
class='HKLM\Software\Classes\CLSID\{7DC6A8EE-5FF8-4E1E-A806-BC89E5E36DC2}'
type_library='HKLM\Software\Classes\TypeLib\{1745CF28-ED94-497F-A8B9-328E7649668D}'

# The command line first: it must not need what is registered below.
. ./command_line.sh

export WINEPATH=$(winepath -w simulator)
for dll in fliglaf.dll simulator/iohelper.dll examples/shared_blocks.dll; do
  wine regsvr32 /s $dll || fail "regsvr32 $dll"
done
in_registry "$class\\InprocServer32" || fail "the class is not registered"
in_registry "$type_library" || fail "the type library is not registered"

# The exit status alone is not enough: that of a Wine whose server died is 0.
for program in *_test.exe; do
  rm -f results.xml
  wine "$program" --gtest_brief=1 --gtest_output=xml:results.xml "$@" || fail "$program"
  grep -q '<testsuites .*failures="0".* errors="0"' results.xml || fail "$program broke off"
done

# The windows once more, on the smallest screen with the most dots to the inch.
dots='HKCU\Control Panel\Desktop'
wine reg add "$dots" /v LogPixels /t REG_DWORD /d 192 /f >/dev/null
wineserver -k -w
rm -f results.xml
wine explorer /desktop=small,800x600 windows_test.exe --gtest_brief=1 \
  --gtest_filter='EditorWindow.HasRoom*' --gtest_output=xml:results.xml
grep -q '<testsuites tests="1" failures="0".* errors="0"' results.xml || fail "windows_test on a small screen"
wine reg delete "$dots" /v LogPixels /f >/dev/null
wineserver -k -w

cat >expected.txt <<'END'
instance 5
map 5
power -1
length 70000
error D
end
END
wine cscript /nologo late_bound.vbs report.txt
diff <(tr -d '\r' <report.txt) expected.txt || fail "the script did not get what it should"
echo "[script] late_bound.vbs passed"

FLIGLAF_SIM_CHIP=script.chip wine cscript /nologo examples/program.vbs examples/blink.hex log.txt ||
  fail "examples/program.vbs"
cat >expected.txt <<'END'
>><Erase>
>><Blank Check>
>>Erase ok
>><Program>
>><Verify>
>>Program ok
60 bytes programmed and verified
END
diff <(tr -d '\r' <log.txt | grep -v 'Sec$') expected.txt || fail "examples/program.vbs told something else"
cmp script.chip bench.chip || fail "examples/program.vbs left another chip than the command line"
echo "[script] examples/program.vbs passed"

wine regsvr32 /s /u fliglaf.dll || fail "regsvr32 /u"
wine regsvr32 /s /u simulator/iohelper.dll || fail "regsvr32 /u iohelper.dll"
wine regsvr32 /s /u examples/shared_blocks.dll || fail "regsvr32 /u shared_blocks.dll"
for key in "$class" 'HKLM\Software\Classes\fliglaf.clsMPU' 'HKLM\Software\Classes\IoHelper.IoHelper' \
  'HKLM\Software\Classes\fliglafExample.SharedBlocks' \
  "$type_library" 'HKLM\Software\Classes\Interface\{659962A6-F0AD-491F-9E3B-A4C02B607997}'; do
  if in_registry "$key"; then fail "regsvr32 /u left $key"; fi
done
wine regsvr32 /s /n /i:user fliglaf.dll || fail "regsvr32 /n /i:user"
in_registry "${class/HKLM/HKCU}" || fail "the class is not registered for the user"
if in_registry "$class"; then fail "registering for the user registered for everybody"; fi
wine regsvr32 /s /u /n /i:user fliglaf.dll || fail "regsvr32 /u /n /i:user"
if in_registry "${class/HKLM/HKCU}"; then fail "regsvr32 /u /n /i:user left the class"; fi
echo "[registry] passed"
