#include "host/com/late_binding.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <utility>

#include "platform/win32/variant.h"

namespace fliglaf {
namespace {

using platform::Variant;

struct Member {
  const wchar_t* name;
  DISPID id;
  WORD kinds;
  VARTYPE type;             ///< of the value or the argument; VT_EMPTY: it has none
  const wchar_t* argument;  ///< its name
};

constexpr WORD kProperty = DISPATCH_PROPERTYGET | DISPATCH_PROPERTYPUT;
constexpr WORD kMethod = DISPATCH_METHOD;

// The numbers are those of the type library.
constexpr std::array kMembers{
    Member{L"buflg", 1, kProperty, VT_I4, nullptr},
    Member{L"exitpower", 2, kProperty, VT_BOOL, nullptr},
    Member{L"runMpu4Prg", 3, kMethod, VT_BOOL, L"usbenable"},
    Member{L"mpu4warn", 4, kMethod, VT_UI1, L"no"},
    Member{L"editfigmpu40", 5, kMethod, VT_EMPTY, nullptr},
    Member{L"bufcommpu4", 6, kMethod, VT_I2, L"num"},
    Member{L"freesharebuffermpu4", 7, kMethod, VT_EMPTY, nullptr},
    Member{L"sinitmpu4", 8, kMethod, VT_EMPTY, nullptr},
};

const Member* Find(DISPID id) {
  const auto found = std::ranges::find(kMembers, id, &Member::id);
  return found == kMembers.end() ? nullptr : &*found;
}

bool SameName(const wchar_t* one, const wchar_t* other) {
  return CompareStringOrdinal(one, -1, other, -1, TRUE) == CSTR_EQUAL;
}

bool IsNumber(const VARIANT& value) {
  switch (value.vt) {
    case VT_I1:
    case VT_UI1:
    case VT_I2:
    case VT_UI2:
    case VT_I4:
    case VT_UI4:
    case VT_INT:
    case VT_UINT:
    case VT_I8:
    case VT_UI8:
    case VT_R4:
    case VT_R8:
    case VT_CY:
    case VT_DECIMAL:
      return true;
    default:
      return false;
  }
}

/// Changes a value to `type`, whatever the language of the machine.
HRESULT Convert(VARIANT& to, const VARIANT& from, VARTYPE type) {
  return VariantChangeTypeEx(&to, const_cast<VARIANT*>(&from), LOCALE_INVARIANT, 0, type);
}

/// An argument or value as a caller passed it.
class Passed {
 public:
  explicit Passed(VARIANT& argument) : place_(&argument) {
    // Scripts pass a variable as a variant by reference, in some hosts one inside the other.
    for (int depth = 0; depth < 4 && place_->vt == (VT_BYREF | VT_VARIANT); ++depth) {
      place_ = place_->pvarVal;
      in_variable_ = true;
    }
  }

  /// The value as `type`, in `value`.
  HRESULT Read(VARTYPE type, bool keep_integers, VARIANT& value) {
    const HRESULT copied = VariantCopyInd(&before_, place_);
    if (FAILED(copied)) return copied;
    if (before_.vt == VT_ERROR && before_.scode == DISP_E_PARAMNOTFOUND) {
      return DISP_E_PARAMNOTOPTIONAL;
    }
    const bool plain = before_.vt == VT_EMPTY || before_.vt == VT_BOOL || before_.vt == VT_BSTR ||
                       before_.vt == VT_DATE || IsNumber(before_);
    if (!plain) return DISP_E_TYPEMISMATCH;
    return Convert(value, before_, keep_integers && IsNumber(before_) ? VARTYPE{VT_I2} : type);
  }

  /// Hands a value that the call has changed back to the caller's variable, in the type that this
  /// has. Nothing to do for a value that was no variable.
  HRESULT WriteBack(const VARIANT& value) {
    Variant converted;
    if (place_->vt & VT_BYREF) {
      const HRESULT status = Convert(converted, value, before_.vt);
      return SUCCEEDED(status) ? Store(converted) : status;
    }
    if (!in_variable_) return S_OK;
    const HRESULT status =
        Convert(converted, value, before_.vt == VT_EMPTY ? value.vt : before_.vt);
    return SUCCEEDED(status) ? VariantCopy(place_, &converted) : status;
  }

 private:
  HRESULT Store(VARIANT& value) {
    switch (value.vt) {
      case VT_I1:
      case VT_UI1:
        std::memcpy(place_->byref, &value.bVal, sizeof value.bVal);
        return S_OK;
      case VT_I2:
      case VT_UI2:
      case VT_BOOL:
        std::memcpy(place_->byref, &value.iVal, sizeof value.iVal);
        return S_OK;
      case VT_I4:
      case VT_UI4:
      case VT_INT:
      case VT_UINT:
      case VT_R4:
        std::memcpy(place_->byref, &value.lVal, sizeof value.lVal);
        return S_OK;
      case VT_DECIMAL:
        *place_->pdecVal = value.decVal;
        place_->pdecVal->wReserved = 0;
        return S_OK;
      case VT_BSTR:
        std::swap(*place_->pbstrVal, value.bstrVal);
        return S_OK;
      default:  // 64-bit integers, double, currency, date
        std::memcpy(place_->byref, &value.llVal, sizeof value.llVal);
        return S_OK;
    }
  }

  VARIANT* place_;
  bool in_variable_ = false;
  Variant before_;
};

HRESULT GetProperty(_clsMPU& object, const Member& member, VARIANT& result) {
  VariantInit(&result);
  result.vt = member.type;
  return member.type == VT_I4 ? object.get_buflg(&result.lVal)
                              : object.get_exitpower(&result.boolVal);
}

HRESULT PutProperty(_clsMPU& object, const Member& member, Passed& argument) {
  Variant value;
  const HRESULT status = argument.Read(member.type, false, value);
  if (FAILED(status)) return status;
  return member.type == VT_I4 ? object.put_buflg(value.lVal) : object.put_exitpower(value.boolVal);
}

HRESULT CallWithoutArgument(_clsMPU& object, DISPID id) {
  switch (id) {
    case 5:
      return object.editfigmpu40();
    case 7:
      return object.freesharebuffermpu4();
    default:
      return object.sinitmpu4();
  }
}

HRESULT CallWithArgument(_clsMPU& object, const Member& member, Passed& argument) {
  const bool keep_integers = member.type == VT_BOOL;
  Variant value;
  HRESULT status = argument.Read(member.type, keep_integers, value);
  if (FAILED(status)) return status;
  const SHORT before = value.iVal;
  switch (member.type) {
    case VT_BOOL:
      status = object.runMpu4Prg(&value.boolVal);
      break;
    case VT_UI1:
      status = object.mpu4warn(&value.bVal);
      break;
    default:
      status = object.bufcommpu4(&value.iVal);
      break;
  }
  if (FAILED(status) || value.iVal == before) return status;
  return argument.WriteBack(value);
}

/// Whether the arguments are named as a call of that kind names them.
bool NamesFit(const DISPPARAMS& parameters, bool is_put) {
  if (parameters.cNamedArgs == 0) return true;
  if (parameters.cNamedArgs > 1 || parameters.cArgs == 0) return false;
  return parameters.rgdispidNamedArgs[0] == (is_put ? DISPID_PROPERTYPUT : 0);
}

}  // namespace

HRESULT FindNames(LPOLESTR* names, UINT count, DISPID* ids) {
  if (count == 0) return S_OK;
  std::fill_n(ids, count, DISPID_UNKNOWN);
  const auto member = std::ranges::find_if(
      kMembers, [&](const Member& candidate) { return SameName(candidate.name, names[0]); });
  if (member == kMembers.end()) return DISP_E_UNKNOWNNAME;
  ids[0] = member->id;
  HRESULT status = S_OK;
  for (UINT i = 1; i < count; ++i) {
    if (member->argument != nullptr && SameName(member->argument, names[i])) {
      ids[i] = 0;  // none has more than one
    } else {
      status = DISP_E_UNKNOWNNAME;
    }
  }
  return status;
}

HRESULT InvokeMember(_clsMPU& object, DISPID id, WORD kind, const DISPPARAMS& parameters,
                     VARIANT* result, UINT* argument_error) {
  const Member* const member = Find(id);
  if (member == nullptr || (member->kinds & kind) == 0) return DISP_E_MEMBERNOTFOUND;
  const bool is_put = (kind & member->kinds) == DISPATCH_PROPERTYPUT;
  const bool is_get = !is_put && member->kinds == kProperty;
  if (!NamesFit(parameters, is_put)) return DISP_E_PARAMNOTFOUND;
  const UINT wanted = is_get || member->type == VT_EMPTY ? 0 : 1;
  if (parameters.cArgs != wanted) return DISP_E_BADPARAMCOUNT;
  if (is_get) return result == nullptr ? S_OK : GetProperty(object, *member, *result);
  if (wanted == 0) return CallWithoutArgument(object, id);

  Passed argument(parameters.rgvarg[0]);
  const HRESULT status =
      is_put ? PutProperty(object, *member, argument) : CallWithArgument(object, *member, argument);
  if (FAILED(status) && argument_error != nullptr) *argument_error = 0;
  return status;
}

}  // namespace fliglaf
