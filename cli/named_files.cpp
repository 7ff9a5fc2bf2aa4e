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

struct NamedFile {
  std::string_view role;
  fs::path path;
};

std::vector<NamedFile> NamedFiles(const Options& options) {
  std::vector<NamedFile> files;
  const auto add = [&files](std::string_view role, const fs::path& path) {
    if (!path.empty()) files.push_back({role, path});
  };
  add("FILE", options.memory_file);
  add("--eeprom", options.eeprom_file);
  add("--image", options.image_file);
  add("-o", options.output);
  add("--chip", options.chip_file);
  add("--record", options.record_file);
  add("--vcd", options.waveform_file);
  for (const fs::path& folder : options.device_folders) {
    std::error_code error;  // a folder that cannot be read is found out when the profiles are
    for (const fs::directory_entry& entry : fs::directory_iterator(folder, error)) {
      add("a device profile", entry.path());
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

void CheckRoles(const std::vector<NamedFile>& files) {
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

void CheckNamedFiles(const Options& options) {
  CheckRoles(NamedFiles(options));
  if (!options.record_file.empty()) CheckWritable(options.record_file);
}

}  // namespace fliglaf::cli
