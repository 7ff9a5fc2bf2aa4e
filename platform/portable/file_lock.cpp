#include "platform/file_lock.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <fstream>
#include <string>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <unistd.h>

#include "platform/portable/descriptor.h"

namespace fliglaf::platform {
namespace {

/// The process that has the lock of a file, by /proc/locks, whose lines read
/// "1: FLOCK  ADVISORY  WRITE PID MAJOR:MINOR:INODE 0 EOF"; 0 when it cannot be told.
int HolderOf(const struct stat& file) {
  std::array<char, 64> wanted{};
  std::snprintf(wanted.data(), wanted.size(), "%02x:%02x:%ju", major(file.st_dev),
                minor(file.st_dev), static_cast<std::uintmax_t>(file.st_ino));
  std::ifstream locks("/proc/locks");
  std::string number, kind, manner, access, process, inode, rest;
  while (locks >> number >> kind >> manner >> access >> process >> inode &&
         std::getline(locks, rest)) {
    if (kind == "FLOCK" && inode == wanted.data()) return std::max(std::atoi(process.c_str()), 0);
  }
  return 0;
}

std::string NameOf(int process) {
  std::ifstream file("/proc/" + std::to_string(process) + "/comm");
  std::string name;
  std::getline(file, name);
  return name;
}

[[noreturn]] void FailInUse(const std::filesystem::path& path, const struct stat& file) {
  const int process = HolderOf(file);
  std::string message = path.string() + ": in use by ";
  if (process == 0) throw FileInUse(message + "another process");
  message += "process " + std::to_string(process);
  const std::string name = NameOf(process);
  throw FileInUse(name.empty() ? message : message + " (" + name + ")");
}

/// For writing where that is allowed: NFS grants an exclusive lock on no other file.
Descriptor Open(const std::filesystem::path& file) {
  constexpr int kFlags = O_NONBLOCK | O_NOCTTY | O_CLOEXEC;
  Descriptor opened(open(file.c_str(), O_RDWR | kFlags));
  if (!opened.is_open()) opened = Descriptor(open(file.c_str(), O_RDONLY | kFlags));
  if (!opened.is_open()) ThrowErrno();
  return opened;
}

enum class Taken { kYes, kInUse, kNoLocks };

Taken Lock(int descriptor) {
  while (flock(descriptor, LOCK_EX | LOCK_NB) != 0) {
    if (errno == EWOULDBLOCK) return Taken::kInUse;
    if (errno == ENOLCK || errno == EOPNOTSUPP || errno == EBADF || errno == ENOSYS) {
      return Taken::kNoLocks;
    }
    if (errno != EINTR) ThrowErrno();
  }
  return Taken::kYes;
}

}  // namespace

FileLock::FileLock(const std::filesystem::path& file) {
  for (;;) {
    Descriptor opened = Open(file);
    struct stat locked = {};
    if (fstat(opened.number(), &locked) != 0) ThrowErrno();
    if (!S_ISREG(locked.st_mode)) return;
    const Taken taken = Lock(opened.number());
    if (taken == Taken::kNoLocks) return;
    if (taken == Taken::kInUse) FailInUse(file, locked);
    // Whoever had the lock may have replaced the file after it was opened here.
    struct stat present = {};
    if (stat(file.c_str(), &present) != 0) ThrowErrno();
    if (present.st_dev != locked.st_dev || present.st_ino != locked.st_ino) continue;
    handle_ = opened.Release();
    return;
  }
}

FileLock::~FileLock() { const Descriptor closed(static_cast<int>(handle_)); }

}  // namespace fliglaf::platform
