#include "host/com/late_binding.h"

#include <gtest/gtest.h>

#include "platform/win32/com_object.h"
#include "platform/win32/variant.h"

namespace fliglaf {
namespace {

using platform::Variant;

/// Remembers what reached it.
class Recorded final : public platform::ComObject<_clsMPU> {
 public:
  int engine = 0;
  int instance = 0;
  LONG length = 0;
  VARIANT_BOOL power = 0;

  STDMETHODIMP get_buflg(LONG* value) noexcept override { return *value = length, S_OK; }
  STDMETHODIMP put_buflg(LONG value) noexcept override { return length = value, S_OK; }
  STDMETHODIMP get_exitpower(VARIANT_BOOL* value) noexcept override { return *value = power, S_OK; }
  STDMETHODIMP put_exitpower(VARIANT_BOOL value) noexcept override { return power = value, S_OK; }
  STDMETHODIMP runMpu4Prg(VARIANT_BOOL* usb) noexcept override { return engine = *usb, S_OK; }
  STDMETHODIMP mpu4warn(BYTE* no) noexcept override { return *no &= 0x7F, S_OK; }
  STDMETHODIMP editfigmpu40() noexcept override { return S_OK; }
  STDMETHODIMP bufcommpu4(SHORT* num) noexcept override { return instance = *num, S_OK; }
  STDMETHODIMP freesharebuffermpu4() noexcept override { return S_OK; }
  STDMETHODIMP sinitmpu4() noexcept override { return S_OK; }
  STDMETHODIMP GetTypeInfoCount(UINT*) noexcept override { return E_NOTIMPL; }
  STDMETHODIMP GetTypeInfo(UINT, LCID, ITypeInfo**) noexcept override { return E_NOTIMPL; }
  STDMETHODIMP GetIDsOfNames(REFIID, LPOLESTR*, UINT, LCID, DISPID*) noexcept override {
    return E_NOTIMPL;
  }
  STDMETHODIMP Invoke(DISPID, REFIID, LCID, WORD, DISPPARAMS*, VARIANT*, EXCEPINFO*,
                      UINT*) noexcept override {
    return E_NOTIMPL;
  }
};

class LateBinding : public testing::Test {
 protected:
  HRESULT Call(const wchar_t* name, VARIANT& argument, WORD kind = DISPATCH_METHOD) {
    std::wstring text = name;
    LPOLESTR names = text.data();
    DISPID id = 0;
    const HRESULT found = FindNames(&names, 1, &id);
    if (FAILED(found)) return found;
    DISPID put = DISPID_PROPERTYPUT;
    const bool is_put = kind == DISPATCH_PROPERTYPUT;
    return InvokeMember(*object.Get(), id, kind,
                        {&argument, is_put ? &put : nullptr, 1, is_put ? 1U : 0U}, nullptr,
                        nullptr);
  }
  static void Put(VARIANT& variant, SHORT value) {
    variant.vt = VT_I2;
    variant.iVal = value;
  }

  platform::ComPtr<Recorded> object = platform::MakeObject<Recorded>();
};

TEST_F(LateBinding, AScriptsVariableIsReadAndWrittenBackInItsOwnType) {
  Variant variable;
  Put(variable, 158);
  Variant argument;
  argument.vt = VT_BYREF | VT_VARIANT;
  argument.pvarVal = &variable;
  EXPECT_EQ(Call(L"MPU4WARN", argument), S_OK);
  EXPECT_EQ(variable.vt, VT_I2);
  EXPECT_EQ(variable.iVal, 30);

  LONG number = 159;
  Variant reference;
  platform::PointAt(number, reference);
  EXPECT_EQ(Call(L"mpu4warn", reference), S_OK);
  EXPECT_EQ(number, 31);

  Variant literal;
  Put(literal, 158);
  EXPECT_EQ(Call(L"mpu4warn", literal), S_OK);
  EXPECT_EQ(literal.iVal, 158);
}

TEST_F(LateBinding, AnIntegerForTheEngineKeepsItsValueAndATruthIsMinusOne) {
  Variant argument;
  Put(argument, 1);
  EXPECT_EQ(Call(L"runMpu4Prg", argument), S_OK);
  EXPECT_EQ(object->engine, 1);
  argument.vt = VT_BOOL;
  argument.boolVal = VARIANT_TRUE;
  EXPECT_EQ(Call(L"runMpu4Prg", argument), S_OK);
  EXPECT_EQ(object->engine, -1);
  Put(argument, 2);
  EXPECT_EQ(Call(L"exitpower", argument, DISPATCH_PROPERTYPUT), S_OK);
  EXPECT_EQ(object->power, VARIANT_TRUE);
}

TEST_F(LateBinding, WhatCannotBeTakenIsRefusedAndNothingIsCalled) {
  Variant argument;
  argument.vt = VT_BSTR;
  argument.bstrVal = SysAllocString(L"three");
  EXPECT_EQ(Call(L"bufcommpu4", argument), DISP_E_TYPEMISMATCH);
  VariantClear(&argument);
  argument.vt = VT_NULL;
  EXPECT_EQ(Call(L"bufcommpu4", argument), DISP_E_TYPEMISMATCH);
  argument.vt = VT_DISPATCH;
  argument.pdispVal = nullptr;
  EXPECT_EQ(Call(L"runMpu4Prg", argument), DISP_E_TYPEMISMATCH);
  argument.vt = VT_I4;
  argument.lVal = 40'000;
  EXPECT_EQ(Call(L"bufcommpu4", argument), DISP_E_OVERFLOW);
  argument.lVal = 4;
  EXPECT_EQ(Call(L"sinitmpu4", argument), DISP_E_BADPARAMCOUNT);
  EXPECT_EQ(Call(L"sinitmpu5", argument), DISP_E_UNKNOWNNAME);
  EXPECT_EQ(Call(L"bufcommpu4", argument, DISPATCH_PROPERTYPUT), DISP_E_MEMBERNOTFOUND);
  EXPECT_EQ(object->instance, 0);
  EXPECT_EQ(object->engine, 0);
}

}  // namespace
}  // namespace fliglaf
