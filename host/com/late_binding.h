// What an automation client that knows only names gets from clsMPU. The runtime's own call for
// this goes by the type library and refuses what scripts pass: a variant by reference where a byte
// by reference is declared. Here such a variable is read, and written back in its own type.
#pragma once

#include <windows.h>

#include <fliglaf_type_library.h>

namespace fliglaf {

/// Numbers of a member (first) and of the arguments named after it. DISP_E_UNKNOWNNAME for an
/// unknown name.
[[nodiscard]] HRESULT FindNames(LPOLESTR* names, UINT count, DISPID* ids);

/// Calls a member of `object`. DISP_E_TYPEMISMATCH and DISP_E_OVERFLOW for a value that the
/// argument cannot take, with its place in `argument_error`. runMpu4Prg gets any 16-bit integer
/// unchanged: only -1 means true to it.
[[nodiscard]] HRESULT InvokeMember(_clsMPU& object, DISPID id, WORD kind,
                                   const DISPPARAMS& parameters, VARIANT* result,
                                   UINT* argument_error);

}  // namespace fliglaf
