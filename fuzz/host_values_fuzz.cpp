// A host whose every decision is a byte of the input: what it writes into the shared variables,
// what it asks for, and what it calls from within a message-loop turn. Every request ends, within a
// bounded number of calls, and leaves the socket unpowered.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <iostream>
#include <span>

#include "tests/support/hostile_host.h"

namespace {

/// Ones when the input is used up: no more calls from turns, no more mutations.
class InputValues : public fliglaf::test::Values {
 public:
  explicit InputValues(std::span<const std::uint8_t> input) : input_(input) {}
  std::uint8_t Byte() override {
    if (input_.empty()) return 1;
    const std::uint8_t byte = input_.front();
    input_ = input_.subspan(1);
    return byte;
  }

 private:
  std::span<const std::uint8_t> input_;
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  InputValues values({data, size});
  fliglaf::test::HostileHost host(values);
  if (const std::string wrong = host.Play(); !wrong.empty()) {
    std::cerr << host.device() << ": " << wrong << "\n";
    std::abort();
  }
  return 0;
}
