#pragma once

#include <functional>
#include <memory>
#include <vector>

#include "platform/desktop.h"
#include "shared/shared_variables.h"
#include "usb/programmer.h"
#include "usb/usbmpu4prg.h"

namespace fliglaf {

/// What all objects of one loaded library share: the programmer, the desktop, the default windows,
/// and the fact that one request runs at a time.
class Library {
 public:
  Library(Programmer& programmer, platform::Desktop& desktop)
      : programmer_(programmer), desktop_(desktop) {}
  Library(const Library&) = delete;
  Library& operator=(const Library&) = delete;

  [[nodiscard]] platform::Desktop& desktop() { return desktop_; }

  /// Runs the host's request on the USB engine. Returns at once when a request is running already,
  /// which can only be asked for from within a turn of its message loop.
  void RunUsbRequest(const std::shared_ptr<SharedVariables>& variables);

  /// Carries out `action` now, or when the request that is running has ended.
  void WhenIdle(const void* owner, std::function<void()> action);
  /// Drops the actions of `owner` that still wait.
  void Forget(const void* owner);

 private:
  struct Waiting {
    const void* owner;
    std::function<void()> action;
  };

  /// Ends the request: unloads its window and carries out what has waited for that.
  void Unload();

  Programmer& programmer_;
  platform::Desktop& desktop_;
  /// The default window of the USB engine, while it is loaded.
  std::unique_ptr<usbmpu4prg> usb_window_;
  bool running_ = false;
  std::vector<Waiting> waiting_;
};

}  // namespace fliglaf
