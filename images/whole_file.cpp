#include "images/whole_file.h"

#include <string>
#include <system_error>
#include <utility>

#include "platform/input_file.h"

namespace fliglaf {
namespace {

namespace fs = std::filesystem;

constexpr int kMostLinks = 40;  // as many as Linux follows in one path

[[noreturn]] void Fail(const fs::path& path, const std::string& what) {
  throw ImageError(path.string() + ": " + what);
}

/// The type of what `path` leads to; throws when that cannot be found out.
fs::file_type TypeOf(const fs::path& path) {
  if (path.empty()) throw ImageError("the file name is empty");
  std::error_code error;
  const fs::file_type type = fs::status(path, error).type();
  if (type == fs::file_type::none) Fail(path, "cannot be reached: " + error.message());
  return type;
}

fs::path FolderOf(const fs::path& file) {
  return file.has_parent_path() ? file.parent_path() : fs::path(".");
}

/// Whether `link` is one of the names that Linux gives to the open streams of a process. The text
/// of such a link is not always a path, and a file that it leads to is in use.
bool IsOpenStream(const fs::path& link) {
  std::error_code error;
  const fs::path folder = fs::canonical(FolderOf(link), error).relative_path();
  return !folder.empty() && *folder.begin() == "proc";
}

/// Does `step`; an error of the system becomes an ImageError that says `what`.
template <typename Step>
auto OrFail(const fs::path& named, const std::string& what, Step step) {
  try {
    return step();
  } catch (const std::system_error& error) {
    Fail(named, what + ": " + error.code().message());
  }
}

/// Where a write to a path goes.
struct Destination {
  fs::path file;   ///< symbolic links followed
  bool exists;     ///< a file that is to be replaced
  bool is_stream;  ///< to be written straight
};

/// Follows symbolic links by hand, as the end of the chain need not exist yet.
Destination Follow(const fs::path& path, bool exists) {
  fs::path file = path;
  std::error_code error;
  for (int links = 0; fs::is_symlink(fs::symlink_status(file, error)); ++links) {
    if (exists && IsOpenStream(file)) return {path, true, true};
    const fs::path target = fs::read_symlink(file, error);
    if (error || links == kMostLinks) Fail(path, "the symbolic link cannot be followed");
    file = file.parent_path() / target;
  }
  return {file, exists, false};
}

Destination Resolve(const fs::path& path) {
  const fs::file_type type = TypeOf(path);
  switch (type) {
    case fs::file_type::character:
    case fs::file_type::fifo:
      return {path, true, true};
    case fs::file_type::directory:
      Fail(path, "is a folder; it must be a file");
    case fs::file_type::regular:
    case fs::file_type::not_found:
      break;
    default:
      Fail(path, "cannot be written; it must be a file or a stream");
  }
  Destination destination = Follow(path, type != fs::file_type::not_found);
  if (!destination.is_stream && !destination.file.has_filename()) {
    Fail(path, "ends like the name of a folder; it must be a file");
  }
  return destination;
}

/// Throws ImageError when nothing can be written there.
platform::OutputFile Open(const fs::path& named, const Destination& to) {
  const fs::path folder = FolderOf(to.file);
  if (!to.is_stream && TypeOf(folder) != fs::file_type::directory) {
    Fail(named, "there is no folder " + folder.string());
  }
  if (to.exists && !to.is_stream) {
    if (const auto reason = platform::WhyNotReplaceable(to.file); !reason.empty()) {
      Fail(named, reason);
    }
  }
  if (to.is_stream) {
    return OrFail(named, "cannot be opened for writing",
                  [&] { return platform::OutputFile::OpenStream(to.file); });
  }
  return OrFail(named, "cannot create a file in " + folder.string(),
                [&] { return platform::OutputFile::MakeTemporary(to.file); });
}

}  // namespace

std::vector<std::uint8_t> ReadFileWhole(const fs::path& path) {
  const fs::file_type type = TypeOf(path);
  if (type == fs::file_type::not_found) Fail(path, "there is no such file");
  if (type == fs::file_type::directory) Fail(path, "is a folder; it must be a file");
  auto bytes =
      OrFail(path, "cannot be read", [&] { return platform::ReadBytes(path, kLargestFile + 1); });
  if (bytes.size() > kLargestFile) {
    Fail(path, "is too large; it must be at most " + std::to_string(kLargestFile >> 20) + " MiB");
  }
  return bytes;
}

WholeFileWriter::WholeFileWriter(fs::path path)
    : named_(std::move(path)), file_(Open(named_, Resolve(named_))) {}

void WholeFileWriter::Write(std::span<const std::uint8_t> bytes) {
  if (!problem_.empty()) return;
  try {
    file_.Write(bytes);
  } catch (const std::system_error& error) {
    problem_ = error.code().message();
  }
}

void WholeFileWriter::Keep(platform::FileLock* lock) {
  constexpr const char* kWhat = "cannot be written whole";
  if (!problem_.empty()) Fail(named_, kWhat + (": " + problem_));
  OrFail(named_, kWhat, [&] { file_.Flush(); });
  OrFail(named_, "cannot be replaced", [&] { file_.Replace(lock); });
}

void WriteFileWhole(const fs::path& path, std::span<const std::uint8_t> bytes,
                    platform::FileLock* lock) {
  WholeFileWriter file(path);
  file.Write(bytes);
  file.Keep(lock);
}

bool CreateFileWhole(const fs::path& path, std::span<const std::uint8_t> bytes) {
  const Destination to = Resolve(path);
  if (to.exists) return false;
  platform::OutputFile file = Open(path, to);
  return OrFail(path, "cannot be created", [&] {
    file.Write(bytes);
    file.Flush();
    return file.TakeFreeName();
  });
}

fs::path EndOfLinks(const fs::path& path) { return Resolve(path).file; }

void CheckWritable(const fs::path& path) {
  if (const Destination to = Resolve(path); !to.is_stream) (void)Open(path, to);
}

}  // namespace fliglaf
