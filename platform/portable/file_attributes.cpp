#include "platform/portable/file_attributes.h"

#include <cerrno>
#include <cstring>
#include <optional>
#include <string>
#include <sys/stat.h>
#include <sys/types.h>
#include <sys/xattr.h>
#include <unistd.h>

#include "platform/portable/descriptor.h"

namespace fliglaf::platform {
namespace {

constexpr const char* kAccessControlList = "system.posix_acl_access";

/// Of an attribute that this user may not set, or that the file system does not have.
bool IsRefusal(int error) {
  return error == EPERM || error == EACCES || error == ENOTSUP || error == EINVAL;
}

/// The permissions of a file for a new owner, or group. Bits that act in the name of the owner are
/// cleared, and a group that is not that of `file` may not do more than everybody else.
mode_t ModeWithoutOwner(mode_t mode, bool same_group) {
  mode &= 0777U;
  return same_group ? mode : mode & (0707U | (mode & 07U) << 3);
}

mode_t TakeOwner(const struct stat& file, int to) {
  if (fchown(to, file.st_uid, file.st_gid) == 0) return file.st_mode & 07777U;
  const bool same_group = fchown(to, static_cast<uid_t>(-1), file.st_gid) == 0;
  return ModeWithoutOwner(file.st_mode, same_group);
}

/// What `call(buffer, size)` of the xattr family gives, which without a buffer gives the size;
/// nullopt when this user may not read it.
template <typename Call>
std::optional<std::string> Fetch(Call call) {
  std::string value;
  for (;;) {
    const ssize_t size = call(nullptr, std::size_t{0});
    if (size < 0) return std::nullopt;
    value.resize(static_cast<std::size_t>(size));
    const ssize_t got = call(value.data(), value.size());
    if (got < 0 && errno == ERANGE) continue;  // it has grown
    if (got < 0) return std::nullopt;
    value.resize(static_cast<std::size_t>(got));
    return value;
  }
}

void CopyExtendedAttributes(int from, int to) {
  const auto names =
      Fetch([&](char* buffer, std::size_t size) { return flistxattr(from, buffer, size); });
  if (!names) return;
  for (const char* name = names->c_str(); *name != '\0'; name += std::strlen(name) + 1) {
    const auto value =
        Fetch([&](char* buffer, std::size_t size) { return fgetxattr(from, name, buffer, size); });
    if (!value || fsetxattr(to, name, value->data(), value->size(), 0) == 0) continue;
    if (!IsRefusal(errno)) ThrowErrno();
  }
}

}  // namespace

void CopyAttributes(int from, int to) {
  struct stat file = {};
  if (fstat(from, &file) != 0) ThrowErrno();
  const mode_t mode = TakeOwner(file, to);
  fremovexattr(to, kAccessControlList);  // that a new file gets from its folder
  if (fchmod(to, mode) != 0) ThrowErrno();
  CopyExtendedAttributes(from, to);
}

}  // namespace fliglaf::platform
