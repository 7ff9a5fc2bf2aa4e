#include "cli/loopback_port.h"

#include <cerrno>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <string>
#include <sys/socket.h>
#include <system_error>
#include <unistd.h>
#include <utility>

#include "cli/usage_error.h"
#include "platform/terminal.h"

namespace fliglaf::cli {
namespace {

/// How often a wait looks for a stop signal, ms: one that comes just ahead of it does not end it.
constexpr int kStopCheck = 50;

/// Waits until `events` are there. False at a stop signal.
bool WaitFor(const platform::Descriptor& descriptor, short events) {
  pollfd entry{descriptor.number(), events, 0};
  while (!platform::StopRequested()) {
    if (poll(&entry, 1, kStopCheck) > 0) return true;
  }
  return false;
}

}  // namespace

LoopbackPort::LoopbackPort(std::uint16_t number) {
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  address.sin_port = htons(number);
  socklen_t length = sizeof(address);
  auto* const generic = reinterpret_cast<sockaddr*>(&address);
  const int on = 1;
  listener_ = platform::Descriptor(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0));
  const int socket = listener_.number();
  setsockopt(socket, SOL_SOCKET, SO_REUSEADDR, &on, sizeof(on));
  if (bind(socket, generic, length) != 0 || listen(socket, 1) != 0 ||
      getsockname(socket, generic, &length) != 0) {
    throw UsageError("port " + std::to_string(number) + " is not available: " +
                     std::generic_category().message(errno) + "; 0 takes one that is free");
  }
  number_ = ntohs(address.sin_port);
}

bool LoopbackPort::Accept() {
  if (!WaitFor(listener_, POLLIN)) return false;
  client_ = platform::Descriptor(
      accept4(listener_.number(), nullptr, nullptr, SOCK_CLOEXEC | SOCK_NONBLOCK));
  listener_ = platform::Descriptor();
  // An answer is a single byte that somebody waits for.
  const int on = 1;
  setsockopt(client_.number(), IPPROTO_TCP, TCP_NODELAY, &on, sizeof(on));
  return client_.is_open();
}

std::string_view LoopbackPort::Receive() {
  if (!WaitFor(client_, POLLIN)) return {};
  const ssize_t count = recv(client_.number(), received_.data(), received_.size(), 0);
  return {received_.data(), count > 0 ? static_cast<std::size_t>(count) : 0};
}

bool LoopbackPort::Send(std::string_view bytes) {
  while (!bytes.empty()) {
    if (!WaitFor(client_, POLLOUT)) return false;
    const ssize_t count = send(client_.number(), bytes.data(), bytes.size(), MSG_NOSIGNAL);
    if (count < 0) return false;
    bytes.remove_prefix(static_cast<std::size_t>(count));
  }
  return true;
}

}  // namespace fliglaf::cli
