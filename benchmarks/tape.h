// The calls of one run, to be made again without the library and without a bench.
#pragma once

#include <algorithm>
#include <array>
#include <cstdint>
#include <span>
#include <vector>

#include "benchmarks/counting_sink.h"
#include "usb/components/forwarding_programmer.h"

namespace fliglaf {

struct TapedCall {
  Op op;
  Arguments arguments;  ///< of a transfer, its bytes
};

/// What a run called, and what it was answered.
struct Tape {
  std::vector<TapedCall> calls;
  std::vector<std::int32_t> registers;            ///< results of ReadRegister
  std::vector<std::vector<std::uint8_t>> blocks;  ///< what bulk reads brought
};

/// Writes the tape of what passes through.
class TapeWriter : public ForwardingProgrammer {
 public:
  TapeWriter(Programmer& next, Tape& tape) : ForwardingProgrammer(next), tape_(tape) {}

  /// Bulk reads end after the call: takes what has come of the last.
  void TakeBlock() {
    if (block_.empty()) return;
    tape_.blocks.emplace_back(block_.begin(), block_.end());
    block_ = {};
  }

  std::int32_t ReadRegister(std::uint8_t number) override {
    return tape_.registers.emplace_back(ForwardingProgrammer::ReadRegister(number));
  }
  void usbbulkread(std::span<std::uint8_t> destination, std::uint8_t& status) override {
    ForwardingProgrammer::usbbulkread(destination, status);
    block_ = destination;
  }

 protected:
  bool OnCall(Op op, const Arguments& arguments) override {
    TakeBlock();
    tape_.calls.push_back({op, arguments});
    return true;
  }

 private:
  Tape& tape_;
  std::span<std::uint8_t> block_;
};

/// Answers as the tape says, keeps a queue as any programmer has to, and does nothing else.
class TapeSink : public CountingSink {
 public:
  // Across the border of a component nothing is inlined.
  [[gnu::noinline]] std::int32_t QueueRegisterWrite(std::int32_t value,
                                                    std::uint8_t number) override {
    queue_.push_back({value, number});
    return 0;
  }
  [[gnu::noinline]] std::int32_t QueueDelay(std::int32_t time) override {
    queue_.push_back({time, -1});
    return 0;
  }
  [[gnu::noinline]] std::int32_t FlushQueue() override {
    sum += static_cast<std::int64_t>(queue_.size());
    queue_.clear();
    return 0;
  }
  [[gnu::noinline]] std::int32_t BlockTransfer(std::int32_t data, std::int32_t address,
                                               std::int32_t mode) override {
    sum += data + address + mode;
    return 0;
  }
  [[gnu::noinline]] std::int32_t WriteRegister(std::int32_t value, std::uint8_t number) override {
    sum += value + number;
    return 0;
  }

  explicit TapeSink(const Tape& tape) : tape_(tape) {}

  void Rewind() { register_ = block_ = 0; }

  [[gnu::noinline]] std::int32_t ReadRegister(std::uint8_t) override {
    return register_ < tape_.registers.size() ? tape_.registers[register_++] : 0;
  }
  void usbbulkread(std::span<std::uint8_t> destination, std::uint8_t& status) override {
    if (block_ < tape_.blocks.size())
      std::ranges::copy(tape_.blocks[block_++], destination.begin());
    destination.back() = kEndMark;
    status = bulk_status::kDone;
  }

  /// Makes every call of the tape on `programmer`.
  static void Play(const Tape& tape, Programmer& programmer) {
    static std::array<std::uint8_t, 0x10000> memory{};
    std::uint8_t status = 0;
    for (const auto& [op, arguments] : tape.calls) {
      if (const auto perform = Row(op).perform) {
        perform(programmer, arguments);
        continue;
      }
      const auto bytes = std::span(memory).first(static_cast<std::size_t>(arguments[0]));
      if (op == Op::kUsbComWrite) programmer.usbcomwrite(bytes);
      if (op == Op::kUsbBulkRead) programmer.usbbulkread(bytes, status);
    }
  }

 private:
  struct Entry {
    std::int32_t value;
    std::int16_t number;
  };

  const Tape& tape_;
  std::vector<Entry> queue_;
  std::size_t register_ = 0;
  std::size_t block_ = 0;
};

}  // namespace fliglaf
