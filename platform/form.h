// The control model that the library's windows are written against. A form is never drawn by the
// code that owns it: on Windows the platform shows it as a real window, elsewhere it stays in
// memory, where a test or the command line reads and drives it.
#pragma once

#include <functional>
#include <string>

namespace fliglaf::platform {

struct Button {
  std::u16string caption;
  bool visible = true;
  std::function<void()> on_click;

  void Click() const {
    if (on_click) on_click();
  }
};

struct Form {
  std::u16string caption;
  int height = 2700;  ///< twips
};

}  // namespace fliglaf::platform
