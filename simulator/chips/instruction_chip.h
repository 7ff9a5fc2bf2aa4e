#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>

#include "simulator/chips/serial_chip.h"

namespace fliglaf::simulator {

/// A serial chip whose instructions all have the same number of bytes. A byte that it answers goes
/// out with the last one.
class InstructionChip : public SerialChip {
 protected:
  /// `bytes` of an instruction: up to 4.
  InstructionChip(const Clock& clock, const SerialWiring& wiring, const StartUp& start_up,
                  std::size_t bytes)
      : SerialChip(clock, wiring, start_up), length_(bytes) {}

  void Restart() override;
  void TakeByte(std::uint8_t byte) override;

  /// All bytes but the last have come in: what goes out with that one.
  [[nodiscard]] virtual std::optional<std::uint8_t> Answer() const = 0;
  /// A whole instruction has come in.
  virtual void Execute() = 0;

  /// First byte of the instructions that the second byte tells apart.
  static constexpr std::uint8_t kControl = 0xAC;
  /// The first two bytes are those of the programming enable.
  [[nodiscard]] bool IsEnable() const;
  /// Carries out the programming enable; false for any other instruction.
  bool TakeEnable();
  /// In programming mode.
  [[nodiscard]] bool enabled() const { return enabled_; }

  /// Byte `i` of the instruction, from 0.
  [[nodiscard]] std::uint8_t byte_at(std::size_t i) const { return bytes_[i]; }
  [[nodiscard]] std::size_t bytes_taken() const { return taken_; }
  void ForgetBytes() { taken_ = 0; }

 private:
  std::size_t length_;
  std::array<std::uint8_t, 4> bytes_{};
  std::size_t taken_ = 0;
  bool enabled_ = false;
};

}  // namespace fliglaf::simulator
