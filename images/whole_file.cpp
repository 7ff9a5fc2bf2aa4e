#include "images/whole_file.h"

#include <algorithm>
#include <cerrno>
#include <fstream>
#include <iterator>
#include <random>
#include <string>
#include <string_view>
#include <system_error>
#include <utility>

namespace fliglaf {
namespace {

namespace fs = std::filesystem;

constexpr int kMostLinks = 40;  // as many as Linux follows in one path

[[noreturn]] void Fail(const fs::path& path, const std::string& what) {
  throw ImageError(path.string() + ": " + what);
}

/// Why the last stream operation failed, for the end of a message. The streams give no reason
/// themselves; what they stand on sets errno, which has to be cleared before.
std::string Reason() {
  return errno == 0 ? "input/output error" : std::generic_category().message(errno);
}

/// What stands at the end of `path`; throws when the system does not tell.
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

/// Whether `link` is one of the names that Linux gives to the open streams of a process. What such
/// a link tells of its end is not always a path, and a file at its end is in use.
bool IsOpenStream(const fs::path& link) {
  std::error_code error;
  const fs::path folder = fs::canonical(FolderOf(link), error).relative_path();
  return !folder.empty() && *folder.begin() == "proc";
}

/// Where a write to a path goes.
struct Destination {
  fs::path file;   ///< symbolic links followed
  bool exists;     ///< a file that is to be replaced
  bool is_stream;  ///< to be written straight
};

/// Follows symbolic links by hand, as the end of the chain need not exist yet.
Destination Follow(const fs::path& path, fs::file_type type) {
  const bool exists = type != fs::file_type::not_found;
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
      Fail(path, "is a folder; the name of a file is needed");
    case fs::file_type::regular:
    case fs::file_type::not_found:
      break;
    default:
      Fail(path, "is neither a file nor a stream that can be written");
  }
  Destination destination = Follow(path, type);
  if (!destination.is_stream && !destination.file.has_filename()) {
    Fail(path, "ends like the name of a folder; the name of a file is needed");
  }
  return destination;
}

/// A name that no other file of the folder has. It does not grow with the name of the file, which
/// may be as long as the system allows.
fs::path TemporaryName(const fs::path& folder) {
  constexpr std::string_view kDigits = "0123456789abcdef";
  std::random_device random;
  std::string name = ".fliglaf-";
  std::generate_n(std::back_inserter(name), 16, [&] { return kDigits[random() % 16]; });
  return folder / (name + ".tmp");
}

}  // namespace

std::vector<std::uint8_t> ReadFileWhole(const fs::path& path) {
  const fs::file_type type = TypeOf(path);
  if (type == fs::file_type::not_found) Fail(path, "there is no such file");
  if (type == fs::file_type::directory) Fail(path, "is a folder; a file is needed");
  errno = 0;
  std::ifstream stream(path, std::ios::binary);
  if (!stream) Fail(path, "cannot be opened for reading: " + Reason());

  constexpr std::size_t kPiece = 65'536;
  std::vector<std::uint8_t> bytes;
  while (stream) {
    const std::size_t before = bytes.size();
    bytes.resize(before + kPiece);
    stream.read(reinterpret_cast<char*>(bytes.data() + before), kPiece);
    bytes.resize(before + static_cast<std::size_t>(stream.gcount()));
    if (bytes.size() > kLargestFile) {
      Fail(path,
           "is larger than " + std::to_string(kLargestFile >> 20) + " MiB, the most that is read");
    }
  }
  if (stream.bad()) Fail(path, "cannot be read whole: " + Reason());
  return bytes;
}

WholeFileWriter::WholeFileWriter(fs::path path) : named_(std::move(path)) {
  const Destination destination = Resolve(named_);
  destination_ = destination.file;
  if (destination.is_stream) {
    OpenStream();
  } else {
    OpenTemporary(destination.exists);
  }
}

WholeFileWriter::Temporary::~Temporary() {
  std::error_code ignored;
  if (!path.empty()) fs::remove(path, ignored);
}

/// To append: a stream may be a file that is being added to, which keeps what it holds.
void WholeFileWriter::OpenStream() {
  errno = 0;
  stream_.open(destination_, std::ios::binary | std::ios::app);
  if (!stream_) Fail(named_, "cannot be opened for writing: " + Reason());
}

void WholeFileWriter::OpenTemporary(bool replaces) {
  const fs::path folder = FolderOf(destination_);
  if (TypeOf(folder) != fs::file_type::directory) {
    Fail(named_, "there is no folder " + folder.string());
  }
  if (replaces) {  // a rename would not ask whether the file may be written
    errno = 0;
    const std::fstream present(destination_, std::ios::in | std::ios::out | std::ios::binary);
    if (!present) Fail(named_, "cannot be opened for writing: " + Reason());
  }
  errno = 0;
  temporary_.path = TemporaryName(folder);
  stream_.open(temporary_.path, std::ios::binary | std::ios::trunc);
  if (!stream_) Fail(named_, "no file can be made in " + folder.string() + ": " + Reason());
  if (replaces) TakePermissions();
}

void WholeFileWriter::Write(std::span<const std::uint8_t> bytes) {
  if (!problem_.empty()) return;
  errno = 0;
  stream_.write(reinterpret_cast<const char*>(bytes.data()),
                static_cast<std::streamsize>(bytes.size()));
  if (!stream_) problem_ = Reason();
}

void WholeFileWriter::Keep() {
  errno = 0;
  stream_.close();
  if (problem_.empty() && !stream_) problem_ = Reason();
  if (!problem_.empty()) Fail(named_, "cannot be written whole: " + problem_);
  if (temporary_.path.empty()) return;
  std::error_code error;
  fs::rename(temporary_.path, destination_, error);
  if (error) Fail(named_, "cannot be replaced: " + error.message());
  temporary_.path.clear();
}

void WholeFileWriter::TakePermissions() {
  std::error_code error;
  const fs::perms permissions = fs::status(destination_, error).permissions();
  if (!error) fs::permissions(temporary_.path, permissions, error);
  if (error) Fail(named_, "its permissions cannot be kept: " + error.message());
}

void WriteFileWhole(const fs::path& path, std::span<const std::uint8_t> bytes) {
  WholeFileWriter file(path);
  file.Write(bytes);
  file.Keep();
}

void CheckWritable(const fs::path& path) {
  if (!Resolve(path).is_stream) const WholeFileWriter trial(path);
}

}  // namespace fliglaf
