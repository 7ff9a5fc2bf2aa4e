// A helper object for scripts, which cannot reach shared memory by themselves: opens the blocks of
// an instance number, reads and writes their elements, loads an image file.
#include <windows.h>

#include <algorithm>
#include <exception>
#include <filesystem>
#include <shared_blocks_type_library.h>
#include <stdexcept>
#include <string>
#include <type_traits>
#include <utility>

#include "images/image.h"
#include "images/utf8_path.h"
#include "platform/win32/class_registration.h"
#include "platform/win32/dispatch_object.h"
#include "record/assignment.h"
#include "shared/shared_variables.h"

namespace fliglaf::example {
namespace {

using platform::ComPtr;

constexpr std::uint8_t kErased = 0xFF;

std::string Utf8(BSTR text) { return std::filesystem::path(text == nullptr ? L"" : text).string(); }
std::wstring Utf16(const char* text) { return Utf8Path(text).wstring(); }

/// Carries out a method; what it throws reaches the script as the description of its error.
template <class Method>
HRESULT Perform(const Method& method) noexcept {
  try {
    method();
    return S_OK;
  } catch (const std::exception& problem) {
    ComPtr<ICreateErrorInfo> error;
    ComPtr<IErrorInfo> info;
    if (FAILED(CreateErrorInfo(&error))) return E_FAIL;
    error->SetDescription(Utf16(problem.what()).data());
    if (SUCCEEDED(error.As(&info))) SetErrorInfo(0, info.Get());
    return E_FAIL;
  }
}

class SharedBlocksObject final : public platform::DispatchObject<ISharedBlocks> {
 public:
  static HRESULT Create(REFIID iid, void** object) noexcept {
    try {
      return platform::MakeObject<SharedBlocksObject>()->QueryInterface(iid, object);
    } catch (const std::exception&) {
      return E_OUTOFMEMORY;
    }
  }

  STDMETHODIMP Open(SHORT instance, LONG bytes) noexcept override {
    return Perform([=, this] {
      const auto fail = [] { throw std::runtime_error("a shared block cannot be created"); };
      blocks_.OpenMainGroup(instance, fail);
      blocks_.quorinbuflength[0] = bytes;
      blocks_.OpenDataBuffers(blocks_.DataBufferLength(), fail);
      std::ranges::fill(Image(), kErased);
    });
  }

  STDMETHODIMP get_Value(BSTR block, LONG index, LONG* value) noexcept override {
    return Perform(
        [=, this] { WithNumbers(block, [=](auto& numbers) { *value = numbers[index]; }); });
  }
  STDMETHODIMP put_Value(BSTR block, LONG index, LONG value) noexcept override {
    return Perform([=, this] {
      WithNumbers(block, [=](auto& numbers) {
        using Number = std::remove_cvref_t<decltype(numbers[0])>;
        if (!std::in_range<Number>(value)) {
          throw std::out_of_range(Utf8(block) + " holds no number " + std::to_string(value));
        }
        numbers[index] = static_cast<Number>(value);
      });
    });
  }

  STDMETHODIMP get_Text(BSTR block, LONG index, BSTR* text) noexcept override {
    return Perform([=, this] {
      const std::u16string_view found = Texts(block)[index];
      *text = SysAllocStringLen(reinterpret_cast<const OLECHAR*>(found.data()),
                                static_cast<UINT>(found.size()));
    });
  }
  STDMETHODIMP put_Text(BSTR block, LONG index, BSTR text) noexcept override {
    return Perform([=, this] {
      Texts(block).Set(index, {reinterpret_cast<const char16_t*>(text), SysStringLen(text)});
    });
  }

  STDMETHODIMP Load(BSTR file, LONG* bytes) noexcept override {
    return Perform([=, this] {
      const fliglaf::Image contents = ReadImage(std::filesystem::path(file));
      const auto image = Image();
      if (contents.end() > image.size()) {
        throw std::out_of_range(Utf8(file) + ": larger than the image, which has " +
                                std::to_string(image.size()) + " bytes");
      }
      *bytes = 0;
      for (const Segment& segment : contents.segments) {
        std::ranges::copy(segment.bytes, image.begin() + segment.address);
        *bytes += static_cast<LONG>(segment.bytes.size());
      }
    });
  }

 private:
  [[nodiscard]] std::span<std::uint8_t> Image() {
    return blocks_.quorinibuffer.Range(0, blocks_.quorinbuflength[0]);
  }

  [[nodiscard]] SharedVariable& Find(BSTR block) {
    const std::string name = Utf8(block);
    const auto found = std::ranges::find_if(
        blocks_.table(), [&name](const SharedVariable* each) { return each->row().name == name; });
    if (found == blocks_.table().end()) throw std::out_of_range(name + ": there is no such block");
    return **found;
  }

  template <class Body>
  void WithNumbers(BSTR block, const Body& body) {
    record::Visit(Find(block), [&]<class Variable>(Variable& variable) {
      if constexpr (std::is_same_v<Variable, StringVariable>) {
        throw std::invalid_argument(Utf8(block) + " holds texts: use Text");
      } else {
        body(variable);
      }
    });
  }

  [[nodiscard]] StringVariable& Texts(BSTR block) {
    SharedVariable& variable = Find(block);
    if (!record::IsText(variable)) {
      throw std::invalid_argument(Utf8(block) + " holds numbers: use Value");
    }
    return static_cast<StringVariable&>(variable);
  }

  SharedVariables blocks_;
};

// The type library's numbers.
constexpr GUID kTypeLibrary = {
    0x0f0cbb5d, 0x2c8b, 0x4f3f, {0x8a, 0x52, 0x6f, 0x3a, 0x51, 0xc3, 0xb7, 0xe4}};

template <class Change>
HRESULT InRegistry(const Change& change, platform::RegisteredFor whom) noexcept {
  try {
    return change({.id = __uuidof(::SharedBlocks),
                   .name = L"fliglaf example: shared blocks",
                   .prog_ids = {L"fliglafExample.SharedBlocks"},
                   .type_library = kTypeLibrary,
                   .version = L"1.0"},
                  whom);
  } catch (const std::exception&) {
    return E_OUTOFMEMORY;
  }
}

}  // namespace
}  // namespace fliglaf::example

using namespace fliglaf;  // NOLINT: the names below are the system's
using platform::RegisteredFor;

STDAPI DllGetClassObject(REFCLSID id, REFIID iid, void** object) {
  return platform::GetClassObject(id, __uuidof(::SharedBlocks), example::SharedBlocksObject::Create,
                                  iid, object);
}

STDAPI DllCanUnloadNow() { return platform::ModuleReferences() == 0 ? S_OK : S_FALSE; }

STDAPI DllRegisterServer() {
  return example::InRegistry(platform::RegisterComClass, RegisteredFor::kEverybody);
}

STDAPI DllUnregisterServer() {
  return example::InRegistry(platform::UnregisterComClass, RegisteredFor::kEverybody);
}

/// regsvr32 /n /i:user: for the user alone.
STDAPI DllInstall(BOOL install, LPCWSTR /*command_line*/) {
  return install ? example::InRegistry(platform::RegisterComClass, RegisteredFor::kUser)
                 : example::InRegistry(platform::UnregisterComClass, RegisteredFor::kUser);
}
