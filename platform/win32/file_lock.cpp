#include "platform/file_lock.h"

#include <algorithm>
#include <array>
#include <string>
#include <string_view>

#include "platform/win32/system_error.h"

namespace fliglaf::platform {
namespace {

/// The path of a file as every process of the session writes it.
std::wstring FullName(const std::filesystem::path& file) {
  std::wstring name(GetFullPathNameW(file.c_str(), 0, nullptr, nullptr), L'\0');
  name.resize(
      GetFullPathNameW(file.c_str(), static_cast<DWORD>(name.size()), name.data(), nullptr));
  CharLowerBuffW(name.data(), static_cast<DWORD>(name.size()));
  return name;
}

/// FNV-1a of 64 bits: names of sections have no backslashes and are shorter than paths.
std::wstring SectionName(std::wstring_view file) {
  std::uint64_t hash = 0xCBF2'9CE4'8422'2325;
  for (const wchar_t c : file) hash = (hash ^ static_cast<std::uint16_t>(c)) * 0x100'0000'01B3;
  return L"Local\\fliglaf-" + std::to_wstring(hash);
}

/// The first number of a section, shared by all who open it; null when it cannot be had.
class SharedNumber {
 public:
  explicit SharedNumber(HANDLE section)
      : number_(static_cast<DWORD*>(
            ::MapViewOfFile(section, FILE_MAP_READ | FILE_MAP_WRITE, 0, 0, sizeof(DWORD)))) {}
  SharedNumber(const SharedNumber&) = delete;
  SharedNumber& operator=(const SharedNumber&) = delete;
  ~SharedNumber() {
    if (number_ != nullptr) ::UnmapViewOfFile(number_);
  }
  [[nodiscard]] DWORD* get() const { return number_; }

 private:
  DWORD* number_;
};

std::string NameOf(DWORD process) {
  const OwnedHandle opened(OpenProcess(PROCESS_QUERY_LIMITED_INFORMATION, FALSE, process));
  std::array<wchar_t, MAX_PATH> image{};
  DWORD size = image.size();
  if (!opened || QueryFullProcessImageNameW(opened.get(), 0, image.data(), &size) == FALSE) {
    return {};
  }
  return std::filesystem::path(std::wstring_view(image.data(), size)).filename().string();
}

[[noreturn]] void FailInUse(const std::filesystem::path& file, HANDLE section) {
  const SharedNumber holder(section);
  std::string message = file.string() + ": in use by ";
  if (holder.get() == nullptr || *holder.get() == 0) throw FileInUse(message + "another process");
  message += "process " + std::to_string(*holder.get());
  const std::string name = NameOf(*holder.get());
  throw FileInUse(name.empty() ? message : message + " (" + name + ")");
}

}  // namespace

FileLock::FileLock(const std::filesystem::path& file) {
  OwnedHandle section(CreateFileMappingW(INVALID_HANDLE_VALUE, nullptr, PAGE_READWRITE, 0,
                                         sizeof(DWORD), SectionName(FullName(file)).c_str()));
  const DWORD error = GetLastError();
  if (!section) ThrowError(error);
  if (error == ERROR_ALREADY_EXISTS) FailInUse(file, section.get());
  if (const SharedNumber holder(section.get()); holder.get() != nullptr) {
    *holder.get() = GetCurrentProcessId();
  }
  handle_ = reinterpret_cast<std::intptr_t>(section.release());
}

FileLock::~FileLock() { const OwnedHandle closed(reinterpret_cast<HANDLE>(handle_)); }

}  // namespace fliglaf::platform
