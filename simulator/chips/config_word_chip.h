#pragma once

#include <array>
#include <cstdint>
#include <vector>

#include "simulator/chip.h"
#include "simulator/clock.h"
#include "simulator/config_word_wiring.h"
#include "simulator/silicon.h"

namespace fliglaf::simulator {

/// A microcontroller with configuration words of 14 bits behind a bit-serial programming mode, in a
/// socket whose adapter brings the shifter's lines to it:
/// - The mode is entered from a supply that was off for 400 ms, by the lines of the socket in their
///   order and by the programming voltage; it lasts as long as both voltages. In its first 200 ms
///   nothing is taken.
/// - Commands are eight clocks, bit 7 first, taken at the rising edge: 0x00 selects the
///   configuration memory and takes a word that has no use, 0x60 goes on to the next address, 0x02
///   takes a word to be written, 0x18 and 0xE8 begin and end its writing, 0x20 gives the word back.
///   Words have 16 clocks: a start bit, bits 0 to 13, a stop bit.
/// - A word is written when its writing has lasted long enough. The first is at the seventh address
///   of the memory; giving a word back goes on to the next.
class ConfigWordChip : public Chip {
 public:
  /// Where it answers.
  static constexpr Lines kDataOut = LinesOf(0, 0x02);

  struct Features {
    int words;       ///< 1 or 2
    bool vpp_first;  ///< wants the programming voltage ahead of the supply
  };

  ConfigWordChip(const Clock& clock, const ConfigWordWiring& wiring, const Silicon& silicon,
                 const Features& features);

  void Power(bool on) override;
  void ProgrammingVoltage(bool on) override;
  void Observe(Lines levels) override;
  [[nodiscard]] std::vector<Signal> Signals() const override;
  [[nodiscard]] std::vector<MemoryArea> Memory() override;
  void Break(const StuckBit& stuck) override { stuck_.push_back(stuck); }

 private:
  enum class Entry : std::uint8_t { kNone, kSupplied, kReady, kEntered };

  void MoveOn();
  void Rise(bool data);
  void Fall();
  void TakeCommand(std::uint8_t command);
  void TakeWord();
  void EndWriting();
  [[nodiscard]] bool at_a_word() const;
  [[nodiscard]] std::uint16_t ReadWord() const;

  static constexpr int kFirstWord = 7;
  static constexpr std::uint8_t kHighBits = 0x3F;

  const Clock& clock_;
  ConfigWordWiring wiring_;
  Silicon silicon_;
  Features features_;
  std::array<std::uint8_t, 4> cells_{0xFF, kHighBits, 0xFF, kHighBits};  ///< low and high bytes
  std::vector<StuckBit> stuck_;

  Lines seen_ = 0;
  bool powered_ = false;
  bool vpp_ = false;
  std::int64_t power_left_at_;
  std::int64_t vpp_came_at_ = 0;
  Entry entry_ = Entry::kNone;
  std::int64_t entered_at_ = 0;

  int clocks_ = 0;
  std::uint32_t shift_ = 0;
  std::uint8_t command_ = 0;
  bool in_word_ = false;
  int address_ = -1;  ///< of the configuration memory; -1: it is not selected
  std::uint16_t loaded_ = 0;
  std::int64_t writing_since_ = -1;
};

}  // namespace fliglaf::simulator
