// File descriptors.
#pragma once

#include <utility>

namespace fliglaf::platform {

/// Throws std::system_error with errno.
[[noreturn]] void ThrowErrno();

/// Waits until `descriptor` is ready for `events` of poll(2). Throws Stopped when the user stops
/// the program meanwhile.
void WaitUntilReady(int descriptor, short events);

/// Closes its descriptor; -1 is none.
class Descriptor {
 public:
  Descriptor() = default;
  explicit Descriptor(int number) : number_(number) {}
  Descriptor(Descriptor&& other) noexcept : number_(other.Release()) {}
  Descriptor& operator=(Descriptor&& other) noexcept {
    std::swap(number_, other.number_);
    return *this;
  }
  ~Descriptor();

  [[nodiscard]] int number() const { return number_; }
  [[nodiscard]] bool is_open() const { return number_ >= 0; }
  [[nodiscard]] int Release() { return std::exchange(number_, -1); }

 private:
  int number_ = -1;
};

}  // namespace fliglaf::platform
