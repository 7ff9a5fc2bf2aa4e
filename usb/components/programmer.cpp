#include "usb/components/programmer.h"

#include <array>
#include <cstdio>

namespace fliglaf {
namespace {

std::string Describe(const std::string& operation, std::uint32_t hresult) {
  std::array<char, 11> digits{};
  std::snprintf(digits.data(), digits.size(), "0x%08X", static_cast<unsigned>(hresult));
  return "IoHelper." + operation + " failed: " + digits.data();
}

}  // namespace

ComponentError::ComponentError(const std::string& operation, std::uint32_t hresult)
    : std::runtime_error(Describe(operation, hresult)), hresult_(hresult) {}

}  // namespace fliglaf
