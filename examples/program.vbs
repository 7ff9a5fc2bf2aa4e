' Programs a HEX file into a device with 4 KiB of flash (isp51-4k) and prints the library's log.
'
'   cscript //nologo program.vbs FILE.hex [LOG.txt]
'
' The script hosts of 32-bit Windows run it; on 64-bit Windows they are in C:\Windows\SysWOW64.
' To get going, from a console in this folder (the last two lines: without a programmer):
'   regsvr32 /n /i:user ..\fliglaf.dll
'   regsvr32 /n /i:user shared_blocks.dll
'   regsvr32 /n /i:user ..\simulator\iohelper.dll
'   set PATH=%PATH%;%CD%\..\simulator
Option Explicit

Const Instance = 0      ' the number of the shared blocks; the simulated programmer's is 0 as well
Const FlashBytes = 4096
Const OnUsb = True

Const BlankCheck = 4, Program = 6, EraseAll = 11

If WScript.Arguments.Count = 0 Then
  WScript.Echo "cscript //nologo program.vbs FILE.hex [LOG.txt]"
  WScript.Quit 2
End If

Dim blocks, library, number, bytes, log
Set blocks = CreateObject("fliglafExample.SharedBlocks")
Set library = CreateObject("fliglaf.clsMPU")

blocks.Open Instance, FlashBytes
DescribeDevice
DescribeTexts
bytes = blocks.Load(WScript.Arguments(0))

number = Instance
library.bufcommpu4 number
If Run(EraseAll) = 0 Then Run Program

log = blocks.Text("quorinMainRtstr", 0)
If blocks.Value("quorinprgresult", 0) = 0 Then log = log & bytes & " bytes programmed and verified" & vbLf
Report log
WScript.Quit blocks.Value("quorinprgresult", 0)

' Asks for an operation and waits until it has run: 0 success, 1 failure, 2 stopped.
Function Run(operation)
  blocks.Value("quorinprgresult", 0) = 0
  blocks.Value("quorinprgresult", 1) = operation
  library.runMpu4Prg OnUsb
  Run = blocks.Value("quorinprgresult", 0)
End Function

Sub DescribeDevice()
  blocks.Value("quorinprgmode", 0) = 1              ' device family
  blocks.Value("quorintlength", 0) = FlashBytes
  blocks.Value("quorinpagelength", 0) = 256
  blocks.Value("quorinwltbigendbuf", 0) = 0         ' first and last address
  blocks.Value("quorinwltbigendbuf", 1) = FlashBytes - 1
  blocks.Value("quorinbvcc", 0) = 500               ' 5.00 V
  blocks.Value("quorinbvccpin", 0) = 40
  blocks.Value("quorinbgndpin", 0) = 20
  blocks.Value("quorinchippin", 0) = 40
  blocks.Value("quorinpwte", 0) = 42                ' write time
  blocks.Value("quorinwretry", 0) = 2
End Sub

' The library's log is made of the host's texts.
Sub DescribeTexts()
  Dim texts, i
  texts = Array("<", ">", " ok", " failed", ">>Stopped")
  For i = 0 To UBound(texts)
    blocks.Text("quorinprgnote", i) = texts(i)
  Next
  blocks.Text("quorinMainmnuPrg", BlankCheck) = "Blank Check"
  blocks.Text("quorinMainmnuPrg", Program) = "Program"
  blocks.Text("quorinMainmnuPrg", EraseAll) = "Erase"
End Sub

Sub Report(text)
  WScript.Echo text
  If WScript.Arguments.Count < 2 Then Exit Sub
  With CreateObject("Scripting.FileSystemObject").CreateTextFile(WScript.Arguments(1), True)
    .Write text
    .Close
  End With
End Sub
