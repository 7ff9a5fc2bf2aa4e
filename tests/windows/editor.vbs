' Opens the configuration editor of family 15 and shows a box, which handles the messages. When that has
' been closed, the fuse and lock bytes in the buffer go into the file named first.
Option Explicit
Const Instance = 11, Bytes = 256
Dim files, report, blocks, mpu, number
Set blocks = CreateObject("fliglafExample.SharedBlocks")
Set mpu = CreateObject("fliglaf.clsMPU")
blocks.Open Instance, Bytes
number = Instance
mpu.bufcommpu4 number
blocks.Value("quorinprgmode", 0) = 15
blocks.Value("quorintlength", 0) = Bytes
mpu.sinitmpu4
mpu.editfigmpu40
MsgBox "The editor is open.", 0, "fliglaf script"
Set files = CreateObject("Scripting.FileSystemObject")
Set report = files.CreateTextFile(WScript.Arguments(0), True)
report.Write Hex(blocks.Value("quorinibuffer", Bytes - 32)) & " " & Hex(blocks.Value("quorinibuffer", Bytes - 31))
report.Close
