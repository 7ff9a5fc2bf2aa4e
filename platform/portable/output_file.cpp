#include "platform/output_file.h"

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <fcntl.h>
#include <poll.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>
#include <utility>

#include "platform/file_lock.h"
#include "platform/portable/descriptor.h"
#include "platform/portable/file_attributes.h"
#include "platform/portable/temporary_name.h"
#include "platform/terminal.h"

namespace fliglaf::platform {
namespace {

namespace fs = std::filesystem;

constexpr int kWriteFlags = O_WRONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC;

fs::path FolderOf(const fs::path& file) {
  return file.has_parent_path() ? file.parent_path() : fs::path(".");
}

/// In a sticky folder, such as /tmp, only the owner of a file or of the folder may replace it.
bool IsKeptByStickyFolder(const struct stat& file, const fs::path& folder) {
  struct stat sticky = {};
  const uid_t user = geteuid();
  return stat(folder.c_str(), &sticky) == 0 && (sticky.st_mode & S_ISVTX) != 0 && user != 0 &&
         user != sticky.st_uid && user != file.st_uid;
}

/// A file can be mounted over another one, as containers do; no rename replaces it.
bool IsMountPoint(int descriptor) {
  struct statx state = {};
  return statx(descriptor, "", AT_EMPTY_PATH, 0, &state) == 0 &&
         (state.stx_attributes & STATX_ATTR_MOUNT_ROOT) != 0;
}

/// The limit to the size of files is an error of write(2) instead of the end of the process.
void IgnoreFileSizeSignal() {
  struct sigaction present = {};
  sigaction(SIGXFSZ, nullptr, &present);
  if (present.sa_handler == SIG_DFL) std::signal(SIGXFSZ, SIG_IGN);
}

/// Special files and some file systems cannot flush.
void FlushDescriptor(int descriptor) {
  if (fsync(descriptor) == 0) return;
  if (errno != EINVAL && errno != EROFS && errno != ENOTSUP) ThrowErrno();
}

/// So that a new name in a folder outlives a power failure. A folder may be closed to readers.
void FlushFolder(const fs::path& folder) {
  const Descriptor opened(open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  if (opened.is_open()) FlushDescriptor(opened.number());
}

/// The network file system reports failed writes when a descriptor is closed, at the latest.
void CloseCopy(int descriptor) {
  const int copy = fcntl(descriptor, F_DUPFD_CLOEXEC, 0);
  if (copy < 0 || (close(copy) != 0 && errno != EINTR)) ThrowErrno();
}

/// A pipe without a reader gives ENXIO, and so does a device without a driver.
bool AwaitsReader(const fs::path& stream) {
  struct stat state = {};
  return errno == ENXIO && stat(stream.c_str(), &state) == 0 && S_ISFIFO(state.st_mode);
}

/// Creates the file of a name that this process made up, and locks it as a sign of life. Until it
/// is locked another machine may take it for stale.
Descriptor CreateLocked(const fs::path& folder, mode_t mode, fs::path& name) {
  for (;;) {
    name = TemporaryName(folder);
    Descriptor created(
        open(name.c_str(), O_RDWR | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, mode));
    if (!created.is_open() && errno == EEXIST) continue;
    if (!created.is_open()) ThrowErrno();
    (void)flock(created.number(), LOCK_EX | LOCK_NB);
    struct stat state = {};
    if (fstat(created.number(), &state) == 0 && state.st_nlink == 0) continue;
    return created;
  }
}

/// False when the new name is in use. A network file system has link(2) alone, that of memory cards
/// has no second names.
bool GiveFreeName(const fs::path& file, const fs::path& name) {
  if (link(file.c_str(), name.c_str()) == 0) {
    unlink(file.c_str());
    return true;
  }
  if (errno == EPERM || errno == ENOTSUP || errno == ENOSYS) {
    if (renameat2(AT_FDCWD, file.c_str(), AT_FDCWD, name.c_str(), RENAME_NOREPLACE) == 0) {
      return true;
    }
  }
  if (errno != EEXIST) ThrowErrno();
  return false;
}

}  // namespace

std::string WhyNotReplaceable(const fs::path& file) {
  const Descriptor present(open(file.c_str(), kWriteFlags));
  struct stat state = {};
  if (!present.is_open() || fstat(present.number(), &state) != 0) {
    return "cannot be opened for writing: " + std::generic_category().message(errno);
  }
  const fs::path folder = FolderOf(file);
  if (IsKeptByStickyFolder(state, folder)) {
    return "belongs to another user, and only its owner may replace it in " + folder.string();
  }
  if (IsMountPoint(present.number())) return "is a mount point, which cannot be replaced";
  return {};
}

OutputFile::OutputFile(std::intptr_t handle, fs::path temporary, fs::path destination)
    : handle_(handle), temporary_(std::move(temporary)), destination_(std::move(destination)) {}

OutputFile::OutputFile(OutputFile&& other) noexcept
    : handle_(std::exchange(other.handle_, -1)),
      temporary_(std::exchange(other.temporary_, {})),
      destination_(std::move(other.destination_)) {}

OutputFile::~OutputFile() {
  if (!temporary_.empty()) unlink(temporary_.c_str());
  const Descriptor closed(static_cast<int>(handle_));
}

OutputFile OutputFile::OpenStream(const fs::path& stream) {
  IgnoreFileSizeSignal();
  for (;;) {
    // To append: a stream may be a file that is being added to, which keeps what it holds.
    Descriptor opened(open(stream.c_str(), kWriteFlags | O_APPEND));
    if (opened.is_open()) return {opened.Release(), {}, {}};
    if (!AwaitsReader(stream)) ThrowErrno();
    constexpr int kTurnMs = 50;
    poll(nullptr, 0, kTurnMs);
    if (StopRequested()) throw Stopped();
  }
}

OutputFile OutputFile::MakeTemporary(const fs::path& destination) {
  IgnoreFileSizeSignal();
  const fs::path folder = FolderOf(destination);
  RemoveStaleTemporaries(folder);
  const Descriptor present(open(destination.c_str(), kWriteFlags));
  if (!present.is_open() && errno != ENOENT) ThrowErrno();
  fs::path name;
  // Until it has its owner the file is for nobody else.
  Descriptor created = CreateLocked(folder, present.is_open() ? 0600 : 0666, name);
  OutputFile file(created.Release(), name, destination);
  if (present.is_open()) CopyAttributes(present.number(), static_cast<int>(file.handle_));
  return file;
}

void OutputFile::Write(std::span<const std::uint8_t> bytes) {
  const int descriptor = static_cast<int>(handle_);
  while (!bytes.empty()) {
    const ssize_t count = write(descriptor, bytes.data(), bytes.size());
    if (count >= 0) {
      bytes = bytes.subspan(static_cast<std::size_t>(count));
    } else if (errno == EAGAIN) {
      WaitUntilReady(descriptor, POLLOUT);
    } else if (errno != EINTR) {
      ThrowErrno();
    }
  }
}

void OutputFile::Flush() {
  FlushDescriptor(static_cast<int>(handle_));
  CloseCopy(static_cast<int>(handle_));
}

void OutputFile::Replace(FileLock* lock) {
  if (temporary_.empty()) return;
  if (rename(temporary_.c_str(), destination_.c_str()) != 0) ThrowErrno();
  temporary_.clear();
  if (lock != nullptr) std::swap(lock->handle_, handle_);  // it is locked since it was made
  FlushFolder(FolderOf(destination_));
}

bool OutputFile::TakeFreeName() {
  if (!GiveFreeName(temporary_, destination_)) return false;
  temporary_.clear();
  FlushFolder(FolderOf(destination_));
  return true;
}

}  // namespace fliglaf::platform
