#pragma once

#include <windows.h>

#include <memory>

#include "host/com/components.h"
#include "host/com/request_recorder.h"
#include "host/library.h"
#include "platform/win32/win32_desktop.h"

namespace fliglaf {

/// What all objects of the loaded DLL share, from the first object to the last object or window.
/// The components are released then: when the process unloads the DLL it is too late to release a
/// COM object safely.
struct Session {
  Session();

  Components components;
  platform::Win32Desktop desktop;
  Library library{components, desktop};
};

/// An object's share in the session.
class SessionUse {
 public:
  /// Throws std::system_error when the session cannot begin, also on a thread other than the one
  /// whose objects exist already: windows and components belong to that.
  SessionUse();
  ~SessionUse();
  SessionUse(const SessionUse&) = delete;
  SessionUse& operator=(const SessionUse&) = delete;

  [[nodiscard]] Session& operator*() const { return *session_; }
  [[nodiscard]] Session* operator->() const { return session_; }

 private:
  Session* session_;
};

}  // namespace fliglaf
