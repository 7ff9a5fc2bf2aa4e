#pragma once

#include <windows.h>

namespace fliglaf::platform {

/// While it lives, controls are made in the visual style of the system even where the host's are
/// not: the module's manifest, its resource 2, asks for it. Without that, as the host's are.
class VisualStyle {
 public:
  VisualStyle();
  ~VisualStyle();
  VisualStyle(const VisualStyle&) = delete;
  VisualStyle& operator=(const VisualStyle&) = delete;

 private:
  HANDLE context_;
  ULONG_PTR cookie_ = 0;
};

}  // namespace fliglaf::platform
