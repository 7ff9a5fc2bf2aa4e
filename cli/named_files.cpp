#include "cli/named_files.h"

#include <string_view>
#include <system_error>
#include <vector>

#include <fmt/format.h>

#include "cli/usage_error.h"
#include "images/whole_file.h"

namespace fliglaf::cli {
namespace {

namespace fs = std::filesystem;

struct RoleOfFile {
  std::string_view role;
  fs::path path;
};

std::vector<RoleOfFile> RolesOf(const OptionSet& options) {
  std::vector<RoleOfFile> files;
  for (const auto& [role, path] : options.files()) {
    if (!path->empty()) files.push_back({role, *path});
  }
  for (const fs::path& folder : options.folders()) {
    std::error_code error;  // a folder that cannot be read is found when the profiles are
    for (const fs::directory_entry& entry : fs::directory_iterator(folder, error)) {
      files.push_back({"a device profile", entry.path()});
    }
  }
  return files;
}

/// The one name of what a write to `path` reaches, whether it exists or not.
fs::path EndOf(const fs::path& path) {
  std::error_code error;
  return fs::weakly_canonical(fs::absolute(EndOfLinks(path)), error);
}

bool AreSame(const fs::path& one, const fs::path& other) {
  std::error_code error;
  if (fs::is_character_file(one, error)) return false;  // /dev/null takes and gives to everybody
  const auto exists = [&error](const fs::path& path) { return fs::exists(path, error); };
  if (exists(one) != exists(other)) return false;
  return exists(one) ? fs::equivalent(one, other, error) : EndOf(one) == EndOf(other);
}

/// True for a name of an open stream, such as /dev/stdout.
bool IsDevice(const fs::path& path) { return path.string().starts_with("/dev/"); }

void CheckRoles(const std::vector<RoleOfFile>& files) {
  static const fs::path kStandardOutput = "/dev/stdout";
  for (auto one = files.begin(); one != files.end(); ++one) {
    for (auto other = std::next(one); other != files.end(); ++other) {
      if (one->role == other->role || !AreSame(one->path, other->path)) continue;
      throw UsageError(fmt::format("{}: named as {} and as {}; each needs a file of its own",
                                   other->path.string(), one->role, other->role));
    }
    if (!IsDevice(one->path) && AreSame(one->path, kStandardOutput)) {
      throw UsageError(
          fmt::format("{}: named as {}, and standard output goes there; each needs a "
                      "file of its own",
                      one->path.string(), one->role));
    }
  }
}

}  // namespace

void CheckNamedFiles(const OptionSet& options) { CheckRoles(RolesOf(options)); }

}  // namespace fliglaf::cli
