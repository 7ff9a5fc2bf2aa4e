#include "platform/output_file.h"

#include <algorithm>
#include <cwchar>
#include <random>
#include <system_error>
#include <utility>

#include "platform/win32/system_error.h"

namespace fliglaf::platform {
namespace {

namespace fs = std::filesystem;

constexpr wchar_t kPrefix[] = L".fliglaf-";

HANDLE Native(std::intptr_t handle) { return reinterpret_cast<HANDLE>(handle); }

/// A name of this process that no other file of the folder has.
fs::path TemporaryName(const fs::path& folder) {
  constexpr std::wstring_view kDigits = L"0123456789abcdef";
  std::random_device random;
  std::wstring name = kPrefix + std::to_wstring(GetCurrentProcessId()) + L"-";
  for (int i = 0; i < 16; ++i) name += kDigits[random() % 16];
  return folder / (name + L".tmp");
}

bool IsRunning(DWORD process) {
  const OwnedHandle opened(OpenProcess(SYNCHRONIZE, FALSE, process));
  if (!opened) return GetLastError() != ERROR_INVALID_PARAMETER;  // no process of that number
  return WaitForSingleObject(opened.get(), 0) == WAIT_TIMEOUT;
}

/// Removes what ended processes left. An open file of this kind cannot be removed.
void RemoveStaleTemporaries(const fs::path& folder) {
  WIN32_FIND_DATAW found{};
  const fs::path pattern = folder / (kPrefix + std::wstring(L"*-*.tmp"));
  const HANDLE search = FindFirstFileW(pattern.c_str(), &found);
  if (search == INVALID_HANDLE_VALUE) return;
  do {
    const DWORD maker = std::wcstoul(found.cFileName + std::size(kPrefix) - 1, nullptr, 10);
    if (maker != 0 && !IsRunning(maker)) DeleteFileW((folder / found.cFileName).c_str());
  } while (FindNextFileW(search, &found) != FALSE);
  FindClose(search);
}

bool Exists(const fs::path& file) {
  return GetFileAttributesW(file.c_str()) != INVALID_FILE_ATTRIBUTES;
}

}  // namespace

std::string WhyNotReplaceable(const fs::path& file) {
  constexpr DWORD kShare = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;
  const OwnedHandle present(CreateFileW(file.c_str(), GENERIC_WRITE | DELETE, kShare, nullptr,
                                        OPEN_EXISTING, 0, nullptr));
  if (present.get() != INVALID_HANDLE_VALUE) return {};
  return "cannot be opened for writing: " +
         std::system_category().message(static_cast<int>(GetLastError()));
}

OutputFile::OutputFile(std::intptr_t handle, fs::path temporary, fs::path destination)
    : handle_(handle), temporary_(std::move(temporary)), destination_(std::move(destination)) {}

OutputFile::OutputFile(OutputFile&& other) noexcept
    : handle_(std::exchange(other.handle_, -1)),
      temporary_(std::exchange(other.temporary_, {})),
      destination_(std::move(other.destination_)) {}

OutputFile::~OutputFile() {
  OwnedHandle(Native(handle_)).reset();  // no open file can be removed
  if (!temporary_.empty()) DeleteFileW(temporary_.c_str());
}

OutputFile OutputFile::OpenStream(const fs::path& stream) {
  OwnedHandle opened(CreateFileW(stream.c_str(), GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE,
                                 nullptr, OPEN_EXISTING, 0, nullptr));
  if (opened.get() == INVALID_HANDLE_VALUE) ThrowLastError();
  return {reinterpret_cast<std::intptr_t>(opened.release()), {}, {}};
}

OutputFile OutputFile::MakeTemporary(const fs::path& destination) {
  const fs::path folder = destination.has_parent_path() ? destination.parent_path() : L".";
  RemoveStaleTemporaries(folder);
  fs::path name = TemporaryName(folder);
  OwnedHandle created(CreateFileW(name.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_NEW,
                                  FILE_ATTRIBUTE_NORMAL, nullptr));
  if (created.get() == INVALID_HANDLE_VALUE) ThrowLastError();
  return {reinterpret_cast<std::intptr_t>(created.release()), std::move(name), destination};
}

void OutputFile::Write(std::span<const std::uint8_t> bytes) {
  constexpr std::size_t kPiece = 1U << 20;
  while (!bytes.empty()) {
    DWORD count = 0;
    const auto size = static_cast<DWORD>(std::min(bytes.size(), kPiece));
    if (WriteFile(Native(handle_), bytes.data(), size, &count, nullptr) == FALSE) ThrowLastError();
    bytes = bytes.subspan(count);
  }
}

/// Consoles and pipes cannot flush.
void OutputFile::Flush() {
  if (FlushFileBuffers(Native(handle_)) != FALSE || temporary_.empty()) return;
  ThrowLastError();
}

/// ReplaceFileW gives the new file the attributes and the access control list of the old one, which
/// not every file system can. The section behind a FileLock stands for the name, whatever file it
/// is of.
void OutputFile::Replace(FileLock* /*lock*/) {
  if (temporary_.empty()) return;
  OwnedHandle(Native(std::exchange(handle_, -1))).reset();
  const DWORD flags = REPLACEFILE_IGNORE_MERGE_ERRORS | REPLACEFILE_WRITE_THROUGH;
  if ((!Exists(destination_) || ReplaceFileW(destination_.c_str(), temporary_.c_str(), nullptr,
                                             flags, nullptr, nullptr) == FALSE) &&
      MoveFileExW(temporary_.c_str(), destination_.c_str(),
                  MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH) == FALSE) {
    ThrowLastError();
  }
  temporary_.clear();
}

bool OutputFile::TakeFreeName() {
  OwnedHandle(Native(std::exchange(handle_, -1))).reset();
  if (MoveFileExW(temporary_.c_str(), destination_.c_str(), MOVEFILE_WRITE_THROUGH) == FALSE) {
    const DWORD error = GetLastError();
    if (error == ERROR_ALREADY_EXISTS || error == ERROR_FILE_EXISTS) return false;
    ThrowError(error);
  }
  temporary_.clear();
  return true;
}

}  // namespace fliglaf::platform
