#include "platform/win32/visual_style.h"

#include "platform/win32/module.h"

namespace fliglaf::platform {
namespace {

/// The number of a DLL's own manifest.
constexpr WORD kManifest = 2;

}  // namespace

VisualStyle::VisualStyle() {
  ACTCTXW description = {};
  description.cbSize = sizeof description;
  description.dwFlags = ACTCTX_FLAG_HMODULE_VALID | ACTCTX_FLAG_RESOURCE_NAME_VALID;
  description.hModule = ThisModule();
  description.lpResourceName = MAKEINTRESOURCEW(kManifest);
  context_ = CreateActCtxW(&description);
  if (context_ != INVALID_HANDLE_VALUE) ActivateActCtx(context_, &cookie_);
}

VisualStyle::~VisualStyle() {
  if (context_ == INVALID_HANDLE_VALUE) return;
  if (cookie_ != 0) DeactivateActCtx(0, cookie_);
  ReleaseActCtx(context_);
}

}  // namespace fliglaf::platform
