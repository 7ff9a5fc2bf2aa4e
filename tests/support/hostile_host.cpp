#include "tests/support/hostile_host.h"

#include <limits>

namespace fliglaf::test {
namespace {

constexpr std::int16_t kInstance = 7;
constexpr std::size_t kTextLength = 65'536;
constexpr std::size_t kTurnsToALapse = 64;  ///< between two calls from a message-loop turn
constexpr int kRequests = 3;

SmallDevice AnyDevice(Values& values) {
  static const std::vector<SmallDevice> devices = SmallDevices();
  return devices[values.Below(devices.size())];
}

template <class Variable>
void WriteSome(SharedVariable& variable, Values& values, std::size_t one_in) {
  auto* const numbers = dynamic_cast<Variable*>(&variable);
  if (numbers == nullptr) return;
  const std::int32_t count = std::min(numbers->count(), 4);
  for (std::int32_t i = 0; i < count; ++i) {
    using Element = std::remove_reference_t<decltype((*numbers)[0])>;
    if (values.OneIn(one_in)) (*numbers)[i] = static_cast<Element>(values.Number());
  }
}

}  // namespace

std::int64_t Values::Number() {
  using Limits = std::numeric_limits<std::int32_t>;
  constexpr std::int64_t kMistakes[] = {
      0,
      1,
      -1,
      2,
      3,
      15,
      16,
      17,
      31,
      127,
      128,
      255,
      256,
      257,
      511,
      1024,
      4096,
      16383,
      16384,
      16385,
      32767,
      -32768,
      -32767,
      65'535,
      65'536,
      100'000,
      Limits::max(),
      Limits::min(),
      Limits::max() - 1,
  };
  const std::size_t choice = Below(std::size(kMistakes) + 16);
  if (choice < std::size(kMistakes)) return kMistakes[choice];
  if (choice % 2 == 0) return Byte();
  return static_cast<std::int32_t>(Word());
}

HostileHost::HostileHost(Values& values)
    : values_(values), device_(AnyDevice(values)), host_(device_.device) {
  Prepare(host_, device_);
  host_.bench.programmer().on_turn = [this] { desktop_.DoEvents(); };
  desktop_.on_turn = [this] { return Turn(); };
  desktop_.on_box = [this](int, std::u16string_view, std::u16string_view) {
    return static_cast<int>(1 + values_.Below(5));
  };
  for (auto& object : objects_) {
    object = std::make_unique<clsMPU>(library_);
    std::int16_t instance = kInstance;
    object->bufcommpu4(instance);
  }
}

void HostileHost::WriteVariables() {
  for (SharedVariable* const variable : host_.vars.main_group()) {
    if (variable == &host_.vars.quorinbuflength) continue;
    WriteSome<ByteVariable>(*variable, values_, mutation_);
    WriteSome<BooleanVariable>(*variable, values_, mutation_);
    WriteSome<IntegerVariable>(*variable, values_, mutation_);
    WriteSome<LongVariable>(*variable, values_, mutation_);
  }
}

void HostileHost::WriteTexts() {
  for (StringVariable* const texts :
       {&host_.vars.quorinprgnote, &host_.vars.quorinMainmnuPrg, &host_.vars.quorinMainRtstr}) {
    const auto index =
        static_cast<std::int32_t>(values_.Below(static_cast<std::size_t>(texts->count())));
    texts->Set(index, std::u16string(values_.OneIn(2) ? kTextLength : 0, u'\xD800'));
  }
}

/// What the host has mapped goes first: a block can be made in another size once nobody has it open.
void HostileHost::ResizeBuffer() {
  constexpr std::int32_t kLengths[] = {0,
                                       -1,
                                       -200,
                                       -199,
                                       -201,
                                       1,
                                       300,
                                       1000,
                                       16'384,
                                       40'000,
                                       std::numeric_limits<std::int32_t>::min()};
  host_.vars.ReleaseDataBuffers();
  for (auto& object : objects_) object->freesharebuffermpu4();
  host_.mpu->freesharebuffermpu4();
  host_.vars.quorinbuflength[0] = kLengths[values_.Below(std::size(kLengths))];
  if (values_.OneIn(4)) return;
  std::int16_t instance = kInstance;
  for (auto& object : objects_) object->bufcommpu4(instance);
}

/// A call of the host's, from wherever it is.
void HostileHost::Call() {
  std::unique_ptr<clsMPU>& object = AnyObject();
  auto number = static_cast<std::int16_t>(values_.OneIn(2) ? kInstance : values_.Number());
  auto byte = static_cast<std::uint8_t>(values_.Number());
  switch (values_.Below(8)) {
    case 0:
      return object->runMpu4Prg(number);
    case 1:
      return object->bufcommpu4(number);
    case 2:
      return object->freesharebuffermpu4();
    case 3:
      return object->mpu4warn(byte);
    case 4:
      return object->sinitmpu4();
    case 5:  // releases it, even when it is the one that runs
      object = std::make_unique<clsMPU>(library_);
      return;
    case 6:
      return WriteVariables();
    default:
      host_.vars.quorinprgresult[0] = static_cast<std::uint8_t>(values_.Below(6));
  }
}

bool HostileHost::Turn() {
  if (!values_.OneIn(kTurnsToALapse)) return false;
  Call();
  return values_.OneIn(2);
}

std::string HostileHost::Request() {
  constexpr std::size_t kCodes = 13;
  host_.vars.quorinprgresult[1] = static_cast<std::uint8_t>(
      values_.OneIn(8) ? values_.Number() : static_cast<std::int64_t>(values_.Below(kCodes)));
  auto engine = static_cast<std::int16_t>(values_.OneIn(2) ? 0 : -1);
  limit_.Restart();
  AnyObject()->runMpu4Prg(engine);
  most_calls_ = std::max(most_calls_, limit_.calls());
  if (limit_.exceeded()) return "the request makes calls without an end";
  if (!host_.bench.socket_is_off()) return "the socket has been left powered";
  return {};
}

std::string HostileHost::Play() {
  constexpr std::size_t kMutations[] = {4, 16, 64, 200};
  mutation_ = kMutations[values_.Below(std::size(kMutations))];
  for (int request = 0; request < kRequests; ++request) {
    if (values_.OneIn(4)) ResizeBuffer();
    WriteVariables();
    if (values_.OneIn(2)) host_.vars.quorinprgmode[0] = device_.device.family;
    if (values_.OneIn(4)) WriteTexts();
    if (values_.OneIn(8)) Call();
    if (std::string wrong = Request(); !wrong.empty()) return wrong;
  }
  return {};
}

}  // namespace fliglaf::test
