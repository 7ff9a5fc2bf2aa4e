// A host that knows no rules: what it writes into the shared variables and asks of its objects is
// whatever a source of values says.
#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <string>

#include "tests/support/small_devices.h"

namespace fliglaf::test {

class Values {
 public:
  Values() = default;
  virtual ~Values() = default;
  Values(const Values&) = delete;
  Values& operator=(const Values&) = delete;

  virtual std::uint8_t Byte() = 0;

  std::uint32_t Word() {
    std::uint32_t word = 0;
    for (int i = 0; i < 4; ++i) word = word << 8 | Byte();
    return word;
  }
  std::size_t Below(std::size_t count) { return count <= 256 ? Byte() % count : Word() % count; }
  bool OneIn(std::size_t count) { return Below(count) == 0; }
  /// A number that has been somebody's mistake before, or any.
  std::int64_t Number();
};

/// Hands every call on until there have been so many that the request cannot be in its right mind;
/// from then on every call fails.
class CallLimit : public ForwardingProgrammer {
 public:
  using ForwardingProgrammer::ForwardingProgrammer;
  /// Of a request on a small data buffer.
  static constexpr std::uint64_t kMost = 20'000'000;

  void Restart() { calls_ = 0; }
  [[nodiscard]] bool exceeded() const { return calls_ > kMost; }
  [[nodiscard]] std::uint64_t calls() const { return calls_; }

 protected:
  bool OnCall(Op op, const Arguments&) override {
    if (++calls_ <= kMost || op == Op::kEndRun) return true;
    throw ComponentError("CallLimit", 0x80004005);
  }

 private:
  std::uint64_t calls_ = 0;
};

/// One host with two objects, one small device in the socket, and a few requests.
class HostileHost {
 public:
  explicit HostileHost(Values& values);

  /// What the library did wrong; empty when it was right.
  std::string Play();

  [[nodiscard]] std::uint64_t most_calls() const { return most_calls_; }
  [[nodiscard]] const std::string& device() const { return device_.name; }

 private:
  void WriteVariables();
  void WriteTexts();
  void ResizeBuffer();
  std::string Request();
  bool Turn();
  void Call();
  std::unique_ptr<clsMPU>& AnyObject() { return objects_[values_.Below(objects_.size())]; }

  Values& values_;
  SmallDevice device_;
  TestHost host_;
  CallLimit limit_{host_.bench.programmer()};
  platform::PortableDesktop desktop_{host_.bench};
  Library library_{limit_, desktop_};
  std::array<std::unique_ptr<clsMPU>, 2> objects_;
  std::size_t mutation_ = 1;  ///< one in so many values is written
  std::uint64_t most_calls_ = 0;
};

}  // namespace fliglaf::test
