#pragma once

#include <windows.h>

#include <oleauto.h>

namespace fliglaf::platform {

/// An automation variant that clears itself.
class Variant : public VARIANT {
 public:
  Variant() { VariantInit(this); }
  ~Variant() { VariantClear(this); }
  Variant(const Variant&) = delete;
  Variant& operator=(const Variant&) = delete;
};

// A value as automation passes it by reference.
inline void PointAt(LONG& value, VARIANT& argument) {
  argument.vt = VT_BYREF | VT_I4;
  argument.plVal = &value;
}
inline void PointAt(SHORT& value, VARIANT& argument) {
  argument.vt = VT_BYREF | VT_I2;
  argument.piVal = &value;
}
inline void PointAt(BYTE& value, VARIANT& argument) {
  argument.vt = VT_BYREF | VT_UI1;
  argument.pbVal = &value;
}

}  // namespace fliglaf::platform
