#pragma once

#include <array>
#include <cstdint>
#include <functional>
#include <optional>

#include "platform/portable/time_source.h"
#include "shared/shared_variables.h"
#include "simulator/capture_pipe.h"
#include "simulator/clock.h"
#include "simulator/shifter.h"
#include "simulator/socket.h"
#include "simulator/wires.h"
#include "simulator/write_queue.h"
#include "usb/components/programmer.h"

namespace fliglaf::simulator {

/// A programmer attached by USB: ports and latches on the socket's lines, a shifter, a queue, a
/// capture memory, and the component that judges what was read. Every call takes the time that it
/// would take on the bench.
class SimulatedProgrammer : public Programmer, public platform::TimeSource {
 public:
  /// `instance`: the number of the shared blocks that it serves.
  SimulatedProgrammer(Clock& clock, Socket& socket, std::int16_t instance);

  /// Runs one turn of the caller's message loop: a compare does so at each difference, so that it
  /// can be stopped.
  std::function<void()> on_turn;

  /// Has `watch` see the socket as it is now, and every change from now on.
  void Watch(SocketWatch& watch) { wires_.Watch(watch); }

  /// Makes it one on the parallel port.
  void AttachToParallelPort() {
    lines_come_up_high_ = false;
    PresetLines();
  }

  [[nodiscard]] std::int64_t Now() const override { return clock_.now(); }
  /// News of a running transfer.
  [[nodiscard]] std::optional<std::int64_t> NextEvent() const override { return pipe_.NextEvent(); }
  void WaitUntil(std::int64_t time) override;

  void EndRun() override;
  std::int32_t SetVcc(std::int32_t millivolts) override;
  std::int32_t SetVpp(std::int32_t millivolts, std::uint8_t channel) override;
  void SetGndPin(std::uint8_t pin, std::uint8_t state) override;
  void SetVccPin(std::uint8_t pin, std::uint8_t state) override;
  void SetVppPin(std::uint8_t pin, std::uint8_t state) override;
  std::int32_t SetOutputs(std::int32_t value) override;
  void SignalPass(std::int32_t value) override;
  void SignalFail(std::int32_t value) override;
  std::int32_t OpenProgrammer() override;
  std::int32_t WriteRegister(std::int32_t value, std::uint8_t register_number) override;
  std::int32_t ReadRegister(std::uint8_t register_number) override;
  std::int32_t WriteLatch(std::int32_t value, std::uint8_t latch) override;
  std::int32_t DelayMs(std::int32_t milliseconds) override;
  std::int32_t ShortDelay(std::int32_t microseconds) override;
  std::int32_t QueueRegisterWrite(std::int32_t value, std::uint8_t register_number) override;
  std::int32_t FlushQueue() override;
  std::int32_t QueueDelay(std::int32_t microseconds) override;
  void ReportStartupFailure() override;
  std::int32_t SetFigMode(std::uint8_t mode) override;
  std::int32_t EndProgramming(std::int32_t page, std::int32_t zero, std::int32_t data,
                              std::int32_t address) override;
  std::int32_t BlockTransfer(std::int32_t data, std::int32_t address,
                             std::int32_t check_mode) override;
  void ResetInterface() override;
  void usbcomwrite(std::span<const std::uint8_t> packet) override;
  void usbbulkread(std::span<std::uint8_t> destination, std::uint8_t& status) override;
  [[nodiscard]] std::u16string datstr(std::int32_t value, std::int32_t digits) override;

 private:
  /// Lets a call's time on the USB wire and the work it starts pass, then delivers what is due.
  void Spend(std::int64_t nanoseconds);
  [[nodiscard]] ShifterConfig shifter_config();
  std::optional<std::uint8_t> Execute(std::uint8_t value, std::uint8_t register_number);
  void PresetLines();
  void OpenBlocks();

  Clock& clock_;
  Socket& socket_;
  Wires wires_;
  Shifter shifter_;
  CapturePipe pipe_;
  std::int16_t instance_;
  SharedVariables vars_;
  WriteQueue queue_;
  std::uint8_t captured_ = 0;
  bool lines_come_up_high_ = true;
  /// What registers 0x36 to 0x3E set, in the place of the shared block's bytes.
  std::optional<std::array<std::uint8_t, sizeof(ShifterConfig)>> register_setup_;
};

}  // namespace fliglaf::simulator
