#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <vector>

#include "simulator/chip.h"
#include "simulator/clock.h"
#include "simulator/flash_array.h"
#include "simulator/silicon.h"
#include "simulator/two_wire_wiring.h"

namespace fliglaf::simulator {

/// A flash microcontroller with a programming interface on a clock line and a data line for both
/// ways, as the data sheets of such parts publish it:
/// - The clock rests high. A pulse of 20 µs or more restarts the chip; of a shorter one the rising
///   edge takes a bit in, and the chip changes its own at the falling edge.
/// - A frame begins with a clock that means nothing, then has two bits of instruction: 3 selects a
///   register, 2 reads the status, 1 writes the register and 0 reads it. The latter two have two
///   bits for the number of bytes less one, of which only 0 is served. All values come bit 0 first.
/// - The chip makes the programmer wait: one clock for the registers 0 to 2, five for the data
///   register. It holds the data line low meanwhile, and high in the last of them. A clock ends a
///   frame that writes.
/// - 2 and then 1 in the control register, with nothing between them and the restart, enable the
///   flash commands; 20 ms later the data register takes them. A command byte is answered, its
///   operands are, and so is its end: 0x0D when all is well.
/// - Bytes to be written are taken as fast as they come and programmed one after the other; a
///   command that comes meanwhile is answered when they are.
/// - The lock byte is the complement of the number of pages, from the first on, that the interface
///   neither reads nor writes; it holds from the next restart on. A device erase lifts it. The byte
///   itself can always be read.
class TwoWireChip : public Chip {
 public:
  struct Features {
    bool needs_vpp;  ///< does not listen without the programming voltage
  };

  /// The flash goes up to the lock byte; one page lies above it, unused. The signature's second and
  /// third byte are the registers 0 and 1: device, revision.
  TwoWireChip(const Clock& clock, const TwoWireWiring& wiring, const Silicon& silicon,
              const Features& features);

  void Power(bool on) override;
  void ProgrammingVoltage(bool on) override { vpp_ = on; }
  void Observe(Lines levels) override;
  [[nodiscard]] std::vector<Signal> Signals() const override;
  [[nodiscard]] std::vector<MemoryArea> Memory() override;
  void Break(const StuckBit& stuck) override { flash_.Break(stuck); }

  [[nodiscard]] std::uint64_t conflicts() const override { return conflicts_; }

 private:
  /// What the next rising edge belongs to.
  enum class Phase : std::uint8_t {
    kStart,
    kInstruction,
    kAddress,
    kLength,
    kData,
    kWriteWait,
    kTurnAround,
    kReadWait,
    kAnswer,
    kStop,
    kLost,  ///< until the next restart
  };
  enum class Instruction : std::uint8_t { kReadData, kWriteData, kReadStatus, kSelect };
  enum class Command : std::uint8_t { kNone, kErase = 3, kRead = 6, kWrite = 7 };

  [[nodiscard]] std::size_t flash_bytes() const { return silicon_.flash_bytes + 1; }
  void Restart();
  void Rise(bool data);
  void Fall();
  void Enter(Phase phase);
  void TakeBits(bool data);
  void StartInstruction();
  void StartAnswer(std::uint8_t byte);
  [[nodiscard]] int WaitClocks() const;

  [[nodiscard]] std::uint8_t Status() const;
  [[nodiscard]] std::uint8_t ReadRegister();
  void WriteRegister(std::uint8_t byte);
  void WriteControl(std::uint8_t byte);

  // The flash commands behind the data register.
  void TakeCommandByte(std::uint8_t byte);
  void TakeOperand(std::uint8_t byte);
  void TakeKey(std::uint8_t byte);
  void ProgramByte(std::uint8_t byte);
  [[nodiscard]] bool MayAccess() const;
  void Answer(std::uint8_t byte);
  [[nodiscard]] bool answer_ready() const { return answer_ && clock_.now() >= ready_at_; }

  const Clock& clock_;
  TwoWireWiring wiring_;
  Silicon silicon_;
  Features features_;
  FlashArray flash_;
  bool powered_ = false;
  bool vpp_ = false;

  // The lines.
  bool clock_high_ = true;
  std::int64_t fell_at_ = 0;
  std::uint64_t conflicts_ = 0;

  // The frame.
  Phase phase_ = Phase::kLost;
  Instruction instruction_ = Instruction::kReadData;
  int clocks_ = 0;  ///< in this phase
  unsigned bits_ = 0;
  std::uint8_t out_ = 0;  ///< what goes out in kAnswer, bit 0 first

  // The registers.
  std::uint8_t address_ = 0;
  std::array<std::uint8_t, 2> control_{};  ///< the last two values written since the restart
  std::int64_t enabled_at_ = 0;            ///< 0: not enabled
  std::size_t locked_pages_ = 0;

  // The command.
  Command command_ = Command::kNone;
  std::vector<std::uint8_t> operands_;
  std::uint32_t place_ = 0;
  std::uint32_t left_ = 0;  ///< bytes of a block still to be read or written
  std::optional<std::uint8_t> answer_;
  std::int64_t ready_at_ = 0;    ///< when the answer can be read
  std::int64_t busy_until_ = 0;  ///< programming or erasing
};

}  // namespace fliglaf::simulator
