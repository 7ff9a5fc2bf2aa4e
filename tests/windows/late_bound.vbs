' Creates and uses the object late-bound. What it found goes into the file named first.
Option Explicit
Dim files, report, mpu, number
Set files = CreateObject("Scripting.FileSystemObject")
Set report = files.CreateTextFile(WScript.Arguments(0), True)
Set mpu = CreateObject("fliglaf.clsMPU")
number = 5
mpu.bufcommpu4 number
report.WriteLine "instance " & number
number = 133
mpu.mpu4warn number
report.WriteLine "map " & number
mpu.exitpower = True
report.WriteLine "power " & CInt(mpu.exitpower)
mpu.buflg = 70000
report.WriteLine "length " & mpu.buflg
mpu.sinitmpu4
mpu.freesharebuffermpu4
mpu.runMpu4Prg 1
On Error Resume Next
mpu.bufcommpu4 "three"
report.WriteLine "error " & Hex(Err.Number)
report.WriteLine "end"
report.Close
