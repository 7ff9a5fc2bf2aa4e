#pragma once

#include <algorithm>
#include <cstdint>
#include <memory>
#include <span>
#include <vector>

namespace fliglaf::simulator {

/// What the programmer collects until FlushQueue: register writes and delays. A pass
/// queues hundreds of thousands of them, so an entry takes four bytes, and the queue grows by
/// blocks that stay where they are.
class WriteQueue {
 public:
  class Entry {
   public:
    static constexpr std::uint8_t kDelay = 0xFF;
    static constexpr std::uint32_t kLongestDelay = 0xFFFFFF;  ///< µs

    Entry() = default;
    /// `value`: of the register, or µs.
    Entry(std::uint8_t register_number, std::uint32_t value)
        : bits_(std::uint32_t{register_number} << 24 | value) {}
    /// The register, or kDelay, which is the number of none.
    [[nodiscard]] std::uint8_t register_number() const {
      return static_cast<std::uint8_t>(bits_ >> 24);
    }
    [[nodiscard]] std::uint8_t value() const { return static_cast<std::uint8_t>(bits_); }
    [[nodiscard]] std::int64_t microseconds() const { return bits_ & kLongestDelay; }

   private:
    std::uint32_t bits_;
  };

  void Write(std::uint8_t register_number, std::uint8_t value) { Add({register_number, value}); }

  /// A delay that one entry cannot hold takes several; a negative one is none.
  void Delay(std::int32_t microseconds) {
    auto rest = static_cast<std::uint32_t>(std::max(microseconds, 0));
    for (; rest > Entry::kLongestDelay; rest -= Entry::kLongestDelay) {
      Add({Entry::kDelay, Entry::kLongestDelay});
    }
    Add({Entry::kDelay, rest});
  }

  /// Hands every entry to `carry_out`, in order, and is empty afterwards.
  template <class CarryOut>
  void Send(const CarryOut& carry_out) {
    for (const auto& block : blocks_) {
      const bool last = block == blocks_.back();
      for (const Entry entry : std::span(block.get(), last ? next_ : block.get() + kBlock)) {
        carry_out(entry);
      }
    }
    Clear();
  }

  void Clear() {
    blocks_.clear();
    next_ = end_ = nullptr;
  }

 private:
  static constexpr std::size_t kBlock = 16'384;  ///< entries

  void Add(Entry entry) {
    if (next_ == end_) [[unlikely]] {
      return AddToNewBlock(entry);
    }
    *next_++ = entry;
  }
  /// Stands apart, so that the usual way needs no stack frame.
  void AddToNewBlock(Entry entry);

  std::vector<std::unique_ptr<Entry[]>> blocks_;
  Entry* next_ = nullptr;
  Entry* end_ = nullptr;  ///< of the last block
};

}  // namespace fliglaf::simulator
