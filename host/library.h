#pragma once

#include <functional>
#include <memory>
#include <string_view>
#include <vector>

#include "editors/edit_figmpu40.h"
#include "editors/edit_figmpu41.h"
#include "platform/desktop.h"
#include "shared/shared_variables.h"
#include "usb/components/programmer.h"

namespace fliglaf {

/// What all objects of one loaded library share: the programmer, the desktop, and the fact that one
/// request runs at a time, in a window that is loaded for it.
class Library {
 public:
  Library(Programmer& programmer, platform::Desktop& desktop)
      : programmer_(programmer), desktop_(desktop) {}
  Library(const Library&) = delete;
  Library& operator=(const Library&) = delete;

  [[nodiscard]] platform::Desktop& desktop() { return desktop_; }

  /// Carries a request out on a programmer and a desktop.
  using CarryOut = std::function<void(Programmer&, platform::Desktop&)>;
  /// What to put around every request, if anything: it calls the last argument once, with the
  /// library's own programmer and desktop or with something between them and the request. `call` is
  /// the host's, as text: "runMpu4Prg(-1)".
  std::function<void(std::string_view call, SharedVariables&, Programmer&, platform::Desktop&,
                     const CarryOut&)>
      around_request;

  /// Runs the host's request on the USB engine when `usbenable` is -1, else on the parallel-port
  /// engine. Returns at once when a request is running already, which can only be asked for from
  /// within a turn of its message loop.
  void RunRequest(const std::shared_ptr<SharedVariables>& variables, std::int16_t usbenable);

  /// Shows the configuration editor of the device family, if there is one: a window that works on
  /// these variables and keeps them open. One that is open already is reloaded and comes to the
  /// front. Throws RangeError when the buffer does not hold the bytes.
  void EditConfiguration(const std::shared_ptr<SharedVariables>& variables);
  /// The editors that are open, or null.
  [[nodiscard]] edit_figmpu40* open_edit_figmpu40() const { return IfOpen(edit_figmpu40_); }
  [[nodiscard]] edit_figmpu41* open_edit_figmpu41() const { return IfOpen(edit_figmpu41_); }

  /// Carries out `action` now, or when the request that is running has ended.
  void WhenIdle(const void* owner, std::function<void()> action);
  /// Drops the actions of `owner` that still wait.
  void Forget(const void* owner);

 private:
  struct Waiting {
    const void* owner;
    std::function<void()> action;
  };

  template <class Editor>
  static Editor* IfOpen(const std::unique_ptr<Editor>& editor) {
    return editor && editor->form().loaded ? editor.get() : nullptr;
  }
  template <class Editor>
  void Show(std::unique_ptr<Editor>& editor, const std::shared_ptr<SharedVariables>& variables);
  [[nodiscard]] EditorServices ServicesForEditors();

  /// Ends the request and carries out what has waited for that.
  void EndRequest();

  Programmer& programmer_;
  platform::Desktop& desktop_;
  bool running_ = false;
  std::vector<Waiting> waiting_;
  std::unique_ptr<edit_figmpu40> edit_figmpu40_;
  std::unique_ptr<edit_figmpu41> edit_figmpu41_;
};

}  // namespace fliglaf
