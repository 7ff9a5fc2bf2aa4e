// How fast long run records are replayed, and that memory does not grow with their length. The
// record is that of a family 1 read: captures that stand as N * CALL, and a line for every byte
// handed over.
#include <array>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <string>

#include <benchmark/benchmark.h>

#include "benchmarks/child_process.h"

namespace {

constexpr int kBlockBytes = 16384;

void WriteHead(std::ostream& out, int blocks) {
  out << "fliglaf run record 1\n[before]\nquorinbuflength(0) = 1\nquorinprgmode(0) = 1\n"
         "quorinprgresult(1) = 2\nquorinwltbigendbuf(1) = "
      << blocks * kBlockBytes - 1
      << "\n[call]\nrunMpu4Prg(-1)\n[traffic]\nOpenProgrammer()\nSetFigMode(0)\nSetVcc(0)\n"
         "SetGndPin(0, 1)\nDelayMs(500)\nSetOutputs(0)\nSetVccPin(0, 1)\n"
         "usbcomwrite(30 01 00 00 00 00 00 00 00 00 00 00 00 00 00)\nWriteLatch(0, 3)\n"
         "WriteLatch(8, 2)\nWriteLatch(2, 1)\nWriteLatch(0x80, 0)\nDelayMs(100)\nWriteLatch(0, 2)\n"
         "WriteLatch(8, 2)\nDelayMs(100)\nWriteRegister(0xAC, 0x8E)\nWriteRegister(0x53, 0x8E)\n"
         "WriteRegister(0xFF, 0x8E)\nWriteRegister(1, 0x8F)\nReadRegister(0x21) = 0x69\n"
         "2 * DelayMs(100)\nusbcomwrite(0D 10 00 00 00 08 10 A0 02 01 00 08 08 00 00)\n";
}

void WriteBlock(std::ostream& out, int block) {
  const char* const arm = "usbcomwrite(0A 10 40 00 00 08 10 A0)\n";
  out << arm;
  for (int page = 0; page < kBlockBytes / 256; ++page) {
    const int high = 0xE0 | ((block * (kBlockBytes / 256) + page) & 0x1F);
    out << "QueueRegisterWrite(0x30, 0x8E)\nQueueRegisterWrite(" << high
        << ", 0x8E)\n256 * QueueRegisterWrite(0x01, 0x8F)\n";
  }
  out << "FlushQueue()\nDelayMs(100)\n" << arm << "usbbulkread(quorinibuf2(0), 16449) = 2 data";
  for (int i = 0; i < kBlockBytes; ++i) out << " 5A";
  out << " end AA\n";
  for (int i = 0; i < kBlockBytes; ++i) {
    out << "BlockTransfer(0x5A, " << block * kBlockBytes + i << ", 0)\n";
  }
}

/// Calls in a record of `blocks` blocks.
int WriteRecord(const std::filesystem::path& file, int blocks) {
  std::ofstream out(file);
  WriteHead(out, blocks);
  for (int block = 0; block < blocks; ++block) WriteBlock(out, block);
  out << "FlushQueue()\nDelayMs(100)\nusbcomwrite(0D 00 40 00 00 08 10 A0 02 01 00 08 08 00 00)\n"
         "SignalPass(0)\nEndRun()\n[after]\nquorinprgresult(0) = 0\n";
  return blocks * (kBlockBytes / 256 * 258 + 5 + kBlockBytes) + 28;
}

void BM_Replay(benchmark::State& state) {
  const auto file = TemporaryFile("run");
  const int calls = WriteRecord(file, static_cast<int>(state.range(0)));
  MeasureChild(state, {"replay", file.string()});
  state.counters["calls"] = calls;
  state.counters["calls_per_s"] =
      benchmark::Counter(calls, benchmark::Counter::kIsIterationInvariantRate);
  std::filesystem::remove(file);
}
BENCHMARK(BM_Replay)->Arg(4)->Arg(64)->UseManualTime()->Unit(benchmark::kMillisecond);

}  // namespace
