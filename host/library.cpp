#include "host/library.h"

#include <utility>

namespace fliglaf {

void Library::RunUsbRequest(const std::shared_ptr<SharedVariables>& variables) {
  if (running_) return;
  usb_window_ = std::make_unique<usbmpu4prg>(variables, programmer_, desktop_);
  running_ = true;
  try {
    usb_window_->wmpu0();
  } catch (...) {
    Unload();
    throw;
  }
  Unload();
}

void Library::WhenIdle(const void* owner, std::function<void()> action) {
  if (running_) {
    waiting_.push_back({owner, std::move(action)});
  } else {
    action();
  }
}

void Library::Forget(const void* owner) {
  std::erase_if(waiting_, [owner](const Waiting& waiting) { return waiting.owner == owner; });
}

void Library::Unload() {
  usb_window_.reset();
  running_ = false;
  while (!waiting_.empty()) {  // an action may add one, or take others back
    const Waiting waiting = std::move(waiting_.front());
    waiting_.erase(waiting_.begin());
    waiting.action();
  }
}

}  // namespace fliglaf
