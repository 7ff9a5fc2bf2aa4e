#pragma once

#include <cstdint>
#include <vector>

#include "simulator/chips/timed_chip.h"
#include "simulator/jtag_wiring.h"
#include "simulator/tap.h"

namespace fliglaf::simulator {

/// The test access port that every chip with JTAG has, as IEEE 1149.1 has it: TMS and TDI are taken
/// in at the rising edge of TCK, TDO changes at the falling one and is driven in the two Shift
/// states only. The supply's rise, or five clocks with TMS high, put it into Test-Logic-Reset.
class JtagChip : public TimedChip {
 public:
  void Power(bool on) final;
  void Observe(Lines levels) final;
  [[nodiscard]] std::vector<Signal> Signals() const final;

 protected:
  /// What lies between TDI and TDO in Shift-DR. Bit 0 goes out first.
  struct DataRegister {
    std::uint64_t bits = 0;
    int length = 1;  ///< 1 to 64
    /// A long register behind one of 8 bits: every eighth clock TakeByte moves a byte on.
    bool streams = false;
  };
  struct InstructionRegister {
    int length;              ///< 2 to 32
    std::uint32_t at_reset;  ///< the instruction that Test-Logic-Reset selects
    std::uint32_t capture;   ///< what Capture-IR loads: bits 1 and 0 are 01
  };

  JtagChip(const Clock& clock, const JtagWiring& wiring, const InstructionRegister& instructions)
      : TimedChip(clock), wiring_(wiring), instructions_(instructions) {
    sensitive_ = wiring.tck | wiring.routing;
  }

  /// The supply has come or gone: what the chip keeps in registers is lost.
  virtual void Restart() = 0;
  /// Update-IR: instruction() is a new one.
  virtual void InstructionChanged() {}
  /// Test-Logic-Reset has been entered; instruction() is the one at reset.
  virtual void TestLogicReset() {}
  /// Capture-DR: the register that instruction() selects, loaded.
  virtual DataRegister CaptureDr() = 0;
  /// Update-DR: what has been shifted into that register.
  virtual void UpdateDr(std::uint64_t bits) = 0;
  /// Eight clocks of a register that streams: the byte that came in; what is returned goes out
  /// next.
  virtual std::uint8_t TakeByte(std::uint8_t byte) { return byte; }

  /// Whether the port works at all.
  void Listen(bool listens) { listens_ = listens; }

  [[nodiscard]] std::uint32_t instruction() const { return instruction_; }

 private:
  void Rise(Lines levels);
  void Fall();
  void ShiftData(bool tdi);
  void ShiftInstruction(bool tdi);
  void EnterReset();
  void PutOut(bool bit);

  JtagWiring wiring_;
  InstructionRegister instructions_;
  TapState state_ = TapState::kTestLogicReset;
  bool joined_ = false;  ///< the programmer's lines reach the chip
  bool tck_ = false;
  bool powered_ = false;
  bool listens_ = true;
  DataRegister data_;
  int stream_clocks_ = 0;
  std::uint32_t instruction_shift_ = 0;
  std::uint32_t instruction_ = 0;
};

}  // namespace fliglaf::simulator
