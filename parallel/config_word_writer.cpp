#include "parallel/config_word_writer.h"

#include "parallel/config_mode.h"
#include "parallel/config_word.h"
#include "parallel/start_programmer.h"
#include "usb/components/bits.h"

namespace fliglaf::parallel {
namespace {

// Commands of the bit-serial interface, as the shifter sends them.
constexpr std::int32_t kSelectConfiguration = 0x00;
constexpr std::int32_t kNextAddress = 0x60;
constexpr std::int32_t kLoadWord = 0x02;
constexpr std::int32_t kBeginProgramming = 0x18;
constexpr std::int32_t kEndProgramming = 0xE8;
constexpr std::int32_t kReadWord = 0x20;

/// From the first address of the configuration memory to the word.
constexpr int kAddressesToWord = 7;

/// Data buffer index of the last word's low byte.
constexpr std::int64_t kLastWord = 16398;

std::int16_t ReadSerialByte(EngineRun& run) {
  run.io.WriteRegister(1, reg::kCapture);
  run.io.ShortDelay(10);
  return static_cast<std::int16_t>(reverseBits(run.io.ReadRegister(reg::kCaptured), 8));
}

/// Sends a word of 14 bits between a start and a stop bit.
void SendWord(EngineRun& run, int low, int high) {
  run.io.WriteRegister((low & 0x7F) * 2, reg::kShiftLow);
  run.io.WriteRegister((high & 0x7F) * 2 + low / 128, reg::kShiftLow);
}

struct Word {
  std::int16_t low = 0;
  std::int16_t high = 0;
};

Word WriteWord(EngineRun& run, std::int64_t index) {
  SendInstruction(run, {kLoadWord});
  SendWord(run, run.vars.quorinibuffer[index], run.vars.quorinibuffer[index + 1]);
  SendInstruction(run, {kBeginProgramming});
  run.io.ShortDelay(run.vars.quorinpwte[0]);
  SendInstruction(run, {kEndProgramming, kReadWord});
  const int first = ReadSerialByte(run);
  const int second = ReadSerialByte(run);
  return {static_cast<std::int16_t>(first / 2 | (second & 1) * 128),
          static_cast<std::int16_t>(second / 2 & 0x3F)};
}

}  // namespace

void WriteConfigWord(EngineRun& run) {
  const std::int64_t last = run.vars.quorinbvcch[0] == 1 ? 1 : 0;
  EnterConfigMode(run, 1);
  SendInstruction(run, {kSelectConfiguration});
  for (int unused = 0; unused < 2; ++unused) static_cast<void>(ReadSerialByte(run));
  for (int address = 0; address < kAddressesToWord; ++address) SendInstruction(run, {kNextAddress});
  Word first;
  for (std::int64_t word = 0; word <= last; ++word) {
    const Word read_back = WriteWord(run, kLastWord - 2 * last + 2 * word);
    if (word == 0) first = read_back;
  }
  run.io.SetVppPin(run.vars.quorinbvpppin[0], 0);
  run.io.DelayMs(100);
  DescribeConfigWord(run, first.low, first.high);
}

}  // namespace fliglaf::parallel
