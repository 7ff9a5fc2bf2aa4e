// A host of its own: creates the registered object, early bound, and works with it on the
// simulated programmer that stands in for the components.
#pragma once

#include <windows.h>

#include <algorithm>
#include <fliglaf_type_library.h>
#include <string>

#include <gtest/gtest.h>

#include "platform/win32/com_object.h"
#include "shared/shared_variables.h"

namespace fliglaf::test {

inline constexpr std::int32_t kFlashBytes = 4096;
inline constexpr SHORT kInstance = 7;

/// The environment of the stand-ins while a test runs.
class Setting {
 public:
  Setting(const wchar_t* name, const wchar_t* value) : name_(name) {
    SetEnvironmentVariableW(name, value);
  }
  ~Setting() { SetEnvironmentVariableW(name_, nullptr); }
  Setting(const Setting&) = delete;
  Setting& operator=(const Setting&) = delete;

 private:
  const wchar_t* name_;
};

class RegisteredLibrary : public testing::Test {
 protected:
  void SetUp() override {
    ASSERT_EQ(CoInitialize(nullptr), S_OK);
    // The host's own block, larger than the library would make it.
    ASSERT_TRUE(larger_.OpenAndMapMemoryBlock("quorinwltbigendbuf7", 100'000));
    vars_.OpenMainGroup(kInstance, [] { FAIL(); });
    vars_.quorinbuflength[0] = kFlashBytes;
    vars_.OpenDataBuffers(vars_.DataBufferLength(), [] { FAIL(); });
    vars_.quorinprgmode[0] = 1;
    vars_.quorintlength[0] = kFlashBytes;
    vars_.quorinwltbigendbuf[0] = 0;
    vars_.quorinwltbigendbuf[1] = kFlashBytes - 1;
    vars_.quorinpwte[0] = 42;
    vars_.quorinbvcc[0] = 500;
    vars_.quorinbvccpin[0] = 40;
    vars_.quorinbgndpin[0] = 20;
    vars_.quorinprgnote.Set(2, u" ok");
    vars_.quorinMainmnuPrg.Set(6, u"Program");
    Create();
  }
  void TearDown() override {
    object_.Reset();
    vars_.EmptyTexts();
    CoUninitialize();
  }

  void Create() {
    CLSID id = {};
    ASSERT_EQ(CLSIDFromProgID(L"fliglaf.clsMPU", &id), S_OK);
    ASSERT_EQ(CoCreateInstance(id, nullptr, CLSCTX_INPROC_SERVER, IID_PPV_ARGS(&object_)), S_OK);
    SHORT instance = kInstance;
    ASSERT_EQ(object_->bufcommpu4(&instance), S_OK);
  }
  int Run(std::uint8_t operation) {
    vars_.quorinprgresult[0] = 0;
    vars_.quorinprgresult[1] = operation;
    VARIANT_BOOL usb = VARIANT_TRUE;
    EXPECT_EQ(object_->runMpu4Prg(&usb), S_OK);
    return vars_.quorinprgresult[0];
  }
  std::string Log() {
    const auto text = vars_.quorinMainRtstr[0];
    return {text.begin(), text.end()};
  }
  std::span<std::uint8_t> Image() { return vars_.quorinibuffer.Range(0, kFlashBytes); }

  Setting instance_{L"FLIGLAF_SIM_INSTANCE", L"7"};
  clsMemMapped larger_;
  SharedVariables vars_;
  platform::ComPtr<_clsMPU> object_;
};

}  // namespace fliglaf::test
