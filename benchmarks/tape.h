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
  enum class What : std::uint8_t {
    kQueueRegisterWrite,
    kQueueDelay,
    kFlushQueue,
    kWriteRegister,
    kReadRegister,
    kWriteLatch,
    kDelayMs,
    kShortDelay,
    kBlockTransfer,
    kPacket,
    kBulkRead,
  };
  What what;
  std::int32_t one = 0;
  std::int32_t two = 0;
  std::int32_t three = 0;
};

/// What a run called, and what it was answered. Calls of which a run has a handful are left out.
struct Tape {
  std::vector<TapedCall> calls;
  std::vector<std::int32_t> registers;            ///< results of ReadRegister
  std::vector<std::vector<std::uint8_t>> blocks;  ///< what bulk reads brought
};

/// Writes the tape of what passes through.
class TapeWriter : public ForwardingProgrammer {
 public:
  using What = TapedCall::What;

  TapeWriter(Programmer& next, Tape& tape) : ForwardingProgrammer(next), tape_(tape) {}

  /// Bulk reads end after the call: takes what has come of the last.
  void TakeBlock() {
    if (block_.empty()) return;
    tape_.blocks.emplace_back(block_.begin(), block_.end());
    block_ = {};
  }

  std::int32_t QueueRegisterWrite(std::int32_t value, std::uint8_t number) override {
    return Write({What::kQueueRegisterWrite, value, number}),
           next().QueueRegisterWrite(value, number);
  }
  std::int32_t QueueDelay(std::int32_t time) override {
    return Write({What::kQueueDelay, time}), next().QueueDelay(time);
  }
  std::int32_t FlushQueue() override { return Write({What::kFlushQueue}), next().FlushQueue(); }
  std::int32_t WriteRegister(std::int32_t value, std::uint8_t number) override {
    return Write({What::kWriteRegister, value, number}), next().WriteRegister(value, number);
  }
  std::int32_t ReadRegister(std::uint8_t number) override {
    Write({What::kReadRegister, number});
    return tape_.registers.emplace_back(next().ReadRegister(number));
  }
  std::int32_t WriteLatch(std::int32_t value, std::uint8_t latch) override {
    return Write({What::kWriteLatch, value, latch}), next().WriteLatch(value, latch);
  }
  std::int32_t DelayMs(std::int32_t time) override {
    return Write({What::kDelayMs, time}), next().DelayMs(time);
  }
  std::int32_t ShortDelay(std::int32_t time) override {
    return Write({What::kShortDelay, time}), next().ShortDelay(time);
  }
  std::int32_t BlockTransfer(std::int32_t data, std::int32_t address, std::int32_t mode) override {
    return Write({What::kBlockTransfer, data, address, mode}),
           next().BlockTransfer(data, address, mode);
  }
  void usbcomwrite(std::span<const std::uint8_t> packet) override {
    Write({What::kPacket, static_cast<std::int32_t>(packet.size())});
    next().usbcomwrite(packet);
  }
  void usbbulkread(std::span<std::uint8_t> destination, std::uint8_t& status) override {
    Write({What::kBulkRead, static_cast<std::int32_t>(destination.size())});
    block_ = destination;
    next().usbbulkread(destination, status);
  }

 private:
  void Write(const TapedCall& call) {
    TakeBlock();
    tape_.calls.push_back(call);
  }

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
    for (const auto& [what, one, two, three] : tape.calls) {
      const auto number = static_cast<std::uint8_t>(two);
      switch (what) {
        case TapedCall::What::kQueueRegisterWrite:
          programmer.QueueRegisterWrite(one, number);
          break;
        case TapedCall::What::kQueueDelay:
          programmer.QueueDelay(one);
          break;
        case TapedCall::What::kFlushQueue:
          programmer.FlushQueue();
          break;
        case TapedCall::What::kWriteRegister:
          programmer.WriteRegister(one, number);
          break;
        case TapedCall::What::kReadRegister:
          programmer.ReadRegister(static_cast<std::uint8_t>(one));
          break;
        case TapedCall::What::kWriteLatch:
          programmer.WriteLatch(one, number);
          break;
        case TapedCall::What::kDelayMs:
          programmer.DelayMs(one);
          break;
        case TapedCall::What::kShortDelay:
          programmer.ShortDelay(one);
          break;
        case TapedCall::What::kBlockTransfer:
          programmer.BlockTransfer(one, two, three);
          break;
        case TapedCall::What::kPacket:
          programmer.usbcomwrite(std::span(memory).first(static_cast<std::size_t>(one)));
          break;
        case TapedCall::What::kBulkRead:
          programmer.usbbulkread(std::span(memory).first(static_cast<std::size_t>(one)), status);
          break;
      }
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
