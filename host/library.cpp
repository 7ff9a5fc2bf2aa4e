#include "host/library.h"

#include <exception>
#include <string>
#include <utility>

#include "parallel/mpu4prg.h"
#include "shared/text.h"
#include "usb/usbmpu4prg.h"

namespace fliglaf {
namespace {

constexpr std::int16_t kOnUsb = -1;

}  // namespace

void Library::RunRequest(const std::shared_ptr<SharedVariables>& variables,
                         std::int16_t usbenable) {
  if (running_) return;
  running_ = true;
  const auto carry_out = [&](Programmer& programmer, platform::Desktop& desktop) {
    if (usbenable == kOnUsb) {
      usbmpu4prg(variables, programmer, desktop).wmpu0();
    } else {
      mpu4prg(variables, programmer, desktop).wmpu0();
    }
  };
  try {
    if (around_request) {
      around_request("runMpu4Prg(" + std::to_string(usbenable) + ")", *variables, programmer_,
                     desktop_, carry_out);
    } else {
      carry_out(programmer_, desktop_);
    }
  } catch (...) {
    EndRequest();
    throw;
  }
  EndRequest();
}

void Library::EditConfiguration(const std::shared_ptr<SharedVariables>& variables) {
  const std::uint8_t mode = variables->quorinprgmode[0];
  if (edit_figmpu40::Serves(mode)) return Show(edit_figmpu40_, variables);
  if (edit_figmpu41::Serves(mode)) return Show(edit_figmpu41_, variables);
}

template <class Editor>
void Library::Show(std::unique_ptr<Editor>& editor,
                   const std::shared_ptr<SharedVariables>& variables) {
  if (!editor) editor = std::make_unique<Editor>(ServicesForEditors());
  if (editor->OpenForUser(variables)) desktop_.Show(editor->form());
}

EditorServices Library::ServicesForEditors() {
  const auto datstr = [this](std::int32_t value, std::int32_t digits) {
    try {
      return programmer_.datstr(value, digits);
    } catch (const ComponentError&) {  // editing does not need the component
      return HexDigits(value, digits);
    }
  };
  return {.desktop = desktop_, .datstr = datstr, .when_idle = [this](auto action) {
            WhenIdle(nullptr, std::move(action));
          }};
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

void Library::EndRequest() {
  running_ = false;
  while (!waiting_.empty()) {  // an action may add one, or take others back
    const Waiting waiting = std::move(waiting_.front());
    waiting_.erase(waiting_.begin());
    try {
      waiting.action();
    } catch (const std::exception&) {  // NOLINT: the next ones still have to run
    }
  }
}

}  // namespace fliglaf
