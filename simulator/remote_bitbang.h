// The protocol in which JTAG tools ask a remote process to move the lines for them: a character is
// a request, published with OpenOCD (doc/manual/jtag/drivers/remote_bitbang.txt).
#pragma once

#include <stdexcept>
#include <string>
#include <string_view>

#include "simulator/jtag_cable.h"

namespace fliglaf::simulator {

/// A client sent an unknown request; what() names it and lists the known ones.
class UnknownRequest : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/// The end of the protocol that has the lines. No sockets: texts in, texts out.
class RemoteBitbang {
 public:
  explicit RemoteBitbang(JtagCable& cable) : cable_(cable) {}

  /// Carries out `requests` and appends the answers to those that have one. Throws UnknownRequest;
  /// those before it have been carried out.
  void Take(std::string_view requests, std::string& answers);

  /// The client has asked for the end; what follows is ignored.
  [[nodiscard]] bool quit() const { return quit_; }

 private:
  JtagCable& cable_;
  bool quit_ = false;
};

}  // namespace fliglaf::simulator
