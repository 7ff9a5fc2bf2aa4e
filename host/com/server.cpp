#include "host/com/server.h"

#include <memory>
#include <mutex>
#include <system_error>
#include <utility>

#include "platform/win32/com_object.h"
#include "platform/win32/module.h"

namespace fliglaf {
namespace {

/// The one session of the module. Nothing here has a destructor: when a process ends with objects
/// left, none of them may be touched any more.
struct Current {
  std::mutex guard;
  Session* session = nullptr;
  DWORD thread = 0;
  int uses = 0;
};

/// A window's share in the session and in the module.
class WindowUse {
 public:
  WindowUse() {
    ++platform::ModuleReferences();
    platform::KeepModuleLoaded();
  }
  ~WindowUse() { --platform::ModuleReferences(); }
  WindowUse(const WindowUse&) = delete;
  WindowUse& operator=(const WindowUse&) = delete;

 private:
  SessionUse session_;
};

Current& TheCurrent() {
  static Current current;
  return current;
}

}  // namespace

Session::Session() {
  library.around_request = RecordRequest;
  desktop.hold = [] { return std::make_shared<WindowUse>(); };
}

SessionUse::SessionUse() {
  Current& current = TheCurrent();
  const std::lock_guard lock(current.guard);
  if (current.session == nullptr) {
    current.session = std::make_unique<Session>().release();
    current.thread = GetCurrentThreadId();
  } else if (current.thread != GetCurrentThreadId()) {
    throw std::system_error(RPC_E_WRONG_THREAD, std::system_category(), "clsMPU");
  }
  ++current.uses;
  session_ = current.session;
}

SessionUse::~SessionUse() {
  Current& current = TheCurrent();
  const std::lock_guard lock(current.guard);
  if (--current.uses > 0) return;
  const std::unique_ptr<Session> ended(std::exchange(current.session, nullptr));
}

}  // namespace fliglaf
