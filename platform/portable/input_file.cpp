#include "platform/input_file.h"

#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

#include "platform/portable/descriptor.h"

namespace fliglaf::platform {

std::vector<std::uint8_t> ReadBytes(const std::filesystem::path& file, std::size_t most) {
  // O_NONBLOCK: opening a pipe does not wait for its writer. Until one has come, poll() reports
  // nothing, and after the last one has gone the end of the file.
  const Descriptor input(open(file.c_str(), O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC));
  if (!input.is_open()) ThrowErrno();

  constexpr std::size_t kPiece = 65'536;
  std::vector<std::uint8_t> bytes;
  while (bytes.size() < most) {
    WaitUntilReady(input.number(), POLLIN);
    const std::size_t before = bytes.size();
    bytes.resize(std::min(before + kPiece, most));
    const ssize_t count = read(input.number(), bytes.data() + before, bytes.size() - before);
    bytes.resize(before + static_cast<std::size_t>(std::max<ssize_t>(count, 0)));
    if (count == 0) break;
    if (count < 0 && errno != EAGAIN && errno != EINTR) ThrowErrno();
  }
  return bytes;
}

}  // namespace fliglaf::platform
