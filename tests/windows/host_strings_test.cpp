// The strings in the shared blocks as a host has them: plain BSTRs, read from the block's memory.
#include <windows.h>

#include <algorithm>
#include <map>
#include <oleauto.h>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "tests/windows/registered_library.h"

namespace fliglaf {
namespace {

/// Counts how often each piece of task memory is freed.
class Frees final : public platform::ComObject<IMallocSpy> {
 public:
  std::map<void*, int> freed;

  STDMETHODIMP_(SIZE_T) PreAlloc(SIZE_T bytes) noexcept override { return bytes; }
  STDMETHODIMP_(void*) PostAlloc(void* place) noexcept override { return place; }
  STDMETHODIMP_(void*) PreFree(void* place, BOOL) noexcept override {
    for (auto& [start, count] : freed) count += start == place ? 1 : 0;
    return place;
  }
  STDMETHODIMP_(void) PostFree(BOOL) noexcept override {}
  STDMETHODIMP_(SIZE_T)
  PreRealloc(void* place, SIZE_T bytes, void** moved, BOOL) noexcept override {
    *moved = place;
    return bytes;
  }
  STDMETHODIMP_(void*) PostRealloc(void* place, BOOL) noexcept override { return place; }
  STDMETHODIMP_(void*) PreGetSize(void* place, BOOL) noexcept override { return place; }
  STDMETHODIMP_(SIZE_T) PostGetSize(SIZE_T bytes, BOOL) noexcept override { return bytes; }
  STDMETHODIMP_(void*) PreDidAlloc(void* place, BOOL) noexcept override { return place; }
  STDMETHODIMP_(int) PostDidAlloc(void*, BOOL, int answer) noexcept override { return answer; }
  STDMETHODIMP_(void) PreHeapMinimize() noexcept override {}
  STDMETHODIMP_(void) PostHeapMinimize() noexcept override {}
};

/// Else freed strings wait in a cache for the next allocation. MinGW-w64 does not know the call.
bool TurnStringCacheOff() {
  const auto turn_off = reinterpret_cast<void(WINAPI*)()>(
      reinterpret_cast<void*>(GetProcAddress(GetModuleHandleW(L"oleaut32"), "SetOaNoCache")));
  if (turn_off != nullptr) turn_off();
  return turn_off != nullptr;
}

/// Where the memory of a BSTR begins: its length comes first.
void* StartOf(BSTR string) { return reinterpret_cast<char*>(string) - sizeof(DWORD); }

class HostStrings : public test::RegisteredLibrary {
 protected:
  /// The BSTRs of a block.
  static std::span<BSTR> Raw(const StringVariable& variable) {
    return {static_cast<BSTR*>(variable.block().BaseAddress()),
            static_cast<std::size_t>(variable.count())};
  }
};

TEST_F(HostStrings, AreReadableAfterARunAndTheReplacedOnesAreFreedOnce) {
  ASSERT_TRUE(TurnStringCacheOff());
  const auto spy = platform::MakeObject<Frees>();
  ASSERT_EQ(CoRegisterMallocSpy(spy.Get()), S_OK);
  std::vector<std::pair<BSTR*, std::wstring>> kept;
  for (SharedVariable* variable : vars_.table()) {
    if (variable->type() != ElementType::kString) continue;
    auto& strings = static_cast<StringVariable&>(*variable);
    for (BSTR& string : Raw(strings)) {
      SysFreeString(string);
      const std::wstring text = L"text " + std::to_wstring(kept.size());
      string = SysAllocString(text.c_str());
      kept.emplace_back(&string, text);
      spy->freed[StartOf(string)] = 0;
    }
  }
  BSTR& log = Raw(vars_.quorinMainRtstr)[0];
  BSTR& listing = Raw(vars_.quorinMainRtstr)[1];
  const void* const old_log = StartOf(log);
  const void* const old_listing = StartOf(listing);

  Image()[3] = 0;
  EXPECT_EQ(Run(5), 0);  // a compare writes log and listing

  const std::wstring text(log, SysStringLen(log));
  EXPECT_EQ(text.find(L"text "), 0U) << "what stood in the log stays";
  EXPECT_NE(text.find(L"00000003H"), std::wstring::npos) << Log();
  EXPECT_EQ(text.substr(text.size() - 4), L"Sec\n");
  EXPECT_EQ(listing, nullptr) << "the listing has gone into the log";
  for (const auto& [string, was] : kept) {
    const bool written = string == &log || string == &listing;
    EXPECT_TRUE(written || was == *string) << was.size();
  }
  for (const auto& [start, count] : spy->freed) {
    const bool replaced = start == old_log || start == old_listing;
    EXPECT_EQ(count, replaced ? 1 : 0) << start;
  }
  CoRevokeMallocSpy();
}

}  // namespace
}  // namespace fliglaf
