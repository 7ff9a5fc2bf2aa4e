#include "platform/win32/activation.h"

#include <windows.h>

#include <system_error>

namespace fliglaf::platform {
namespace {

[[noreturn]] void Fail(const std::filesystem::path& manifest) {
  throw std::system_error(static_cast<int>(GetLastError()), std::system_category(),
                          manifest.string());
}

}  // namespace

Activation::Activation(const std::filesystem::path& manifest) {
  ACTCTXW description = {};
  description.cbSize = sizeof description;
  description.lpSource = manifest.c_str();
  context_ = CreateActCtxW(&description);
  if (context_ == INVALID_HANDLE_VALUE) Fail(manifest);
  ULONG_PTR cookie = 0;
  if (ActivateActCtx(context_, &cookie) == FALSE) {
    ReleaseActCtx(context_);
    Fail(manifest);
  }
  cookie_ = cookie;
}

Activation::~Activation() {
  DeactivateActCtx(0, cookie_);
  ReleaseActCtx(context_);
}

}  // namespace fliglaf::platform
