# The command line as a user of Windows runs it, with nothing registered. Sourced by run.sh.

# expect STATUS TEXT ARGUMENT...: the program ends like that and has said TEXT.
expect() {
  local wanted=$1 text=$2 status=0
  shift 2
  wine fliglaf.exe "$@" >said.txt 2>&1 || status=$?
  if [ "$status" -ne "$wanted" ] || ! grep -qF -- "$text" said.txt; then
    cat said.txt
    fail "fliglaf $* ended with $status; expected were $wanted and: $text"
  fi
}

hex=examples/blink.hex
expect 0 'programmed with 60 bytes and verified' program isp51-4k $hex --chip bench.chip --record a.run
expect 0 'a.run: ok' replay a.run
expect 0 '4096 bytes read into bäck.hex' read isp51-4k --chip bench.chip -o bäck.hex
expect 0 'no difference' compare isp51-4k --chip bench.chip bäck.hex
expect 1 'Device Address:00000026H' program isp51-4k $hex --fault stuck=0x26.1=0 --no-erase
expect 1 'Maker 00   Device 0000' verify isp51-4k $hex --fault no-chip
expect 1 'another signature was read' signature isp51-4k --fault no-chip --on-mismatch ignore
expect 2 'böse.hex: there is no such file' verify isp51-4k böse.hex
expect 2 '--fault nonsense' verify isp51-4k $hex --fault nonsense
expect 3 'could not be started' verify isp51-4k $hex --fault no-programmer
expect 3 'call=EndRun:9: not reached' program isp51-4k $hex --fault call=FlushQueue:3 --fault call=EndRun:9
expect 3 'IoHelper is missing' verify isp51-4k $hex --hardware
expect 2 'no-folder' verify isp51-4k $hex --record no-folder/a.run
expect 0 'configuration written: low=E2' fuses set isp-page-16k CKDIV8=1 --chip fuses.chip
expect 0 'low.7        CKDIV8            1      Disable' fuses show isp-page-16k --chip fuses.chip
echo "[command line] passed"
