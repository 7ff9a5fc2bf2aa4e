// What a program without windows of its own sees of a library that shows message boxes and turns
// its message loop. Windows-free, as its user is.
#pragma once

#include <cstdint>
#include <functional>
#include <string_view>

namespace fliglaf::platform {

/// While it lives, it answers the message boxes of its thread instead of showing them, and reports
/// the turns of the thread's message loop. One at a time in a thread.
class HostWatch {
 public:
  /// One of `box_style` with the texts of the box; the answer is the button that closes it. Must
  /// not throw.
  using OnBox =
      std::function<int(int style, std::u16string_view title, std::u16string_view prompt)>;

  /// `on_turn` is called some 60 times a second while messages are handled; must not throw. Throws
  /// std::system_error when Windows refuses the watch.
  HostWatch(std::function<void()> on_turn, OnBox on_box);
  ~HostWatch();
  HostWatch(const HostWatch&) = delete;
  HostWatch& operator=(const HostWatch&) = delete;

  void Turn() const { on_turn_(); }
  [[nodiscard]] int Answer(int style, std::u16string_view title, std::u16string_view prompt) const {
    return on_box_(style, title, prompt);
  }

 private:
  std::function<void()> on_turn_;
  OnBox on_box_;
  std::uintptr_t timer_ = 0;
  void* hook_ = nullptr;
};

}  // namespace fliglaf::platform
