#include "platform/portable/temporary_name.h"

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <csignal>
#include <fcntl.h>
#include <iterator>
#include <optional>
#include <random>
#include <string>
#include <string_view>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include "platform/portable/descriptor.h"

namespace fliglaf::platform {
namespace {

namespace fs = std::filesystem;

constexpr std::string_view kPrefix = ".fliglaf-";
constexpr std::string_view kSuffix = ".tmp";
constexpr std::string_view kDigits = "0123456789abcdef";
constexpr std::size_t kRandomDigits = 16;

/// The process that made a file of this name; nullopt for other names.
std::optional<pid_t> MakerOf(std::string_view name) {
  if (!name.starts_with(kPrefix) || !name.ends_with(kSuffix)) return std::nullopt;
  name.remove_prefix(kPrefix.size());
  name.remove_suffix(kSuffix.size());
  pid_t process = 0;
  const auto [end, error] = std::from_chars(name.data(), name.data() + name.size(), process);
  const std::string_view random(end, static_cast<std::size_t>(name.data() + name.size() - end));
  const bool ours = error == std::errc() && process > 0 && random.size() == 1 + kRandomDigits &&
                    random[0] == '-' &&
                    random.find_first_not_of(kDigits, 1) == std::string_view::npos;
  return ours ? std::optional(process) : std::nullopt;
}

/// A number of our own may also be that of an earlier process: in a container they are few.
bool HasEnded(pid_t process) {
  return process == getpid() || (kill(process, 0) != 0 && errno == ESRCH);
}

void RemoveIfUnlocked(const fs::path& file) {
  struct stat present = {};
  if (lstat(file.c_str(), &present) != 0 || !S_ISREG(present.st_mode)) return;
  const Descriptor opened(open(file.c_str(), O_RDWR | O_NONBLOCK | O_NOFOLLOW | O_CLOEXEC));
  if (opened.is_open() && flock(opened.number(), LOCK_EX | LOCK_NB) == 0) unlink(file.c_str());
}

}  // namespace

fs::path TemporaryName(const fs::path& folder) {
  std::random_device random;
  std::string name = std::string(kPrefix) + std::to_string(getpid()) + "-";
  std::generate_n(std::back_inserter(name), kRandomDigits, [&] { return kDigits[random() % 16]; });
  return folder / name.append(kSuffix);
}

void RemoveStaleTemporaries(const fs::path& folder) {
  std::error_code error;
  for (fs::directory_iterator entry(folder, error), end; !error && entry != end;
       entry.increment(error)) {
    const auto maker = MakerOf(entry->path().filename().string());
    if (maker && HasEnded(*maker)) RemoveIfUnlocked(entry->path());
  }
}

}  // namespace fliglaf::platform
