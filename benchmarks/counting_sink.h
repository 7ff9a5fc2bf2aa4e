#pragma once

#include "usb/components/programmer.h"

namespace fliglaf {

/// A programmer that adds up what is queued and does nothing else.
class CountingSink : public Programmer {
 public:
  std::int64_t sum = 0;

  std::int32_t QueueRegisterWrite(std::int32_t value, std::uint8_t number) override {
    sum += value + number;
    return 0;
  }

  void EndRun() override {}
  std::int32_t SetVcc(std::int32_t) override { return 0; }
  std::int32_t SetVpp(std::int32_t, std::uint8_t) override { return 0; }
  void SetGndPin(std::uint8_t, std::uint8_t) override {}
  void SetVccPin(std::uint8_t, std::uint8_t) override {}
  void SetVppPin(std::uint8_t, std::uint8_t) override {}
  std::int32_t SetOutputs(std::int32_t) override { return 0; }
  void SignalPass(std::int32_t) override {}
  void SignalFail(std::int32_t) override {}
  std::int32_t OpenProgrammer() override { return 0; }
  std::int32_t WriteRegister(std::int32_t, std::uint8_t) override { return 0; }
  std::int32_t ReadRegister(std::uint8_t) override { return 0; }
  std::int32_t WriteLatch(std::int32_t, std::uint8_t) override { return 0; }
  std::int32_t DelayMs(std::int32_t) override { return 0; }
  std::int32_t ShortDelay(std::int32_t) override { return 0; }
  std::int32_t FlushQueue() override { return 0; }
  std::int32_t QueueDelay(std::int32_t) override { return 0; }
  void ReportStartupFailure() override {}
  std::int32_t SetFigMode(std::uint8_t) override { return 0; }
  std::int32_t EndProgramming(std::int32_t, std::int32_t, std::int32_t, std::int32_t) override {
    return 0;
  }
  std::int32_t BlockTransfer(std::int32_t, std::int32_t, std::int32_t) override { return 0; }
  void ResetInterface() override {}
  void usbcomwrite(std::span<const std::uint8_t>) override {}
  void usbbulkread(std::span<std::uint8_t>, std::uint8_t&) override {}
  std::u16string datstr(std::int32_t, std::int32_t) override { return {}; }
};

}  // namespace fliglaf
