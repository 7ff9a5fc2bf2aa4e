#include "replay/player.h"

#include <algorithm>
#include <array>
#include <limits>
#include <stdexcept>
#include <utility>
#include <vector>

#include <fmt/format.h>

#include "host/cls_mpu.h"
#include "resources/string_table.h"
#include "shared/cls_mem_mapped.h"
#include "shared/text.h"
#include "shared/utf8.h"
#include "usb/components/funnel_programmer.h"

namespace fliglaf::record {
namespace {

class PlayedProgrammer : public FunnelProgrammer {
 public:
  explicit PlayedProgrammer(Playback& playback) : playback_(playback) {}

  void usbcomwrite(std::span<const std::uint8_t> packet) override { playback_.Packet(packet); }
  void usbbulkread(std::span<std::uint8_t> destination, std::uint8_t& status) override {
    playback_.BulkRead(destination, status);
  }
  [[nodiscard]] std::u16string datstr(std::int32_t value, std::int32_t digits) override {
    return HexDigits(value, digits);
  }

 protected:
  std::int32_t Perform(Op op, const Arguments& arguments) override {
    return playback_.Numbers(op, arguments);
  }

 private:
  Playback& playback_;
};

/// A desktop on which only happens what the record says, while the clock stands still.
class PlayedDesktop : public platform::Desktop {
 public:
  PlayedDesktop(Playback& playback, SharedVariables& vars) : playback_(playback), vars_(vars) {}

  int MsgBox(int style, std::u16string_view title, std::u16string_view prompt) override {
    return playback_.Box(style, title, prompt);
  }
  void DoEvents() override {
    const std::optional<Event> event = playback_.Turn();
    if (!event) return;
    if (!event->watchdog) {
      vars_.quorinprgresult[0] = event->result;
      return;
    }
    const auto watchdog = std::ranges::find(running_, kWatchdog, &platform::Timer::name);
    if (watchdog != running_.end()) (*watchdog)->Tick();
  }
  [[nodiscard]] std::u16string LoadText(std::int64_t number) override {
    return std::u16string(resources::FindText(number));
  }
  [[nodiscard]] double SecondsSinceMidnight() override { return 0; }

 private:
  void StartTimer(platform::Timer& timer) override {
    StopTimer(timer);
    running_.push_back(&timer);
  }
  void StopTimer(platform::Timer& timer) override { std::erase(running_, &timer); }

  Playback& playback_;
  SharedVariables& vars_;
  std::vector<platform::Timer*> running_;
};

/// A method of the host object, as [call] names it.
struct HostMethod {
  std::string_view name;
  bool takes_argument;
  std::int64_t least;
  std::int64_t most;
  void (*call)(clsMPU&, std::int64_t);
};

constexpr std::int64_t kLeastInteger = std::numeric_limits<std::int16_t>::min();
constexpr std::int64_t kMostInteger = std::numeric_limits<std::int16_t>::max();

constexpr std::array kHostMethods{
    HostMethod{"runMpu4Prg", true, kLeastInteger, kMostInteger,
               [](clsMPU& mpu, std::int64_t argument) {
                 auto usbenable = static_cast<std::int16_t>(argument);
                 mpu.runMpu4Prg(usbenable);
               }},
    HostMethod{"mpu4warn", true, 0, std::numeric_limits<std::uint8_t>::max(),
               [](clsMPU& mpu, std::int64_t argument) {
                 auto no = static_cast<std::uint8_t>(argument);
                 mpu.mpu4warn(no);
               }},
    HostMethod{"editfigmpu40", false, 0, 0, [](clsMPU& mpu, std::int64_t) { mpu.editfigmpu40(); }},
    HostMethod{"bufcommpu4", true, kLeastInteger, kMostInteger,
               [](clsMPU& mpu, std::int64_t argument) {
                 auto num = static_cast<std::int16_t>(argument);
                 mpu.bufcommpu4(num);
               }},
    HostMethod{"freesharebuffermpu4", false, 0, 0,
               [](clsMPU& mpu, std::int64_t) { mpu.freesharebuffermpu4(); }},
    HostMethod{"sinitmpu4", false, 0, 0, [](clsMPU& mpu, std::int64_t) { mpu.sinitmpu4(); }},
};

struct HostCall {
  const HostMethod* method;
  std::int64_t argument;
};

HostCall TakeHostCall(std::string_view text) {
  Scanner scanner(text);
  const std::string_view name = scanner.Word();
  const auto method = std::ranges::find(kHostMethods, name, &HostMethod::name);
  if (method == kHostMethods.end()) {
    throw TextError(fmt::format("the host object has no method \"{}\"", Excerpt(name)));
  }
  scanner.Expect('(');
  const std::int64_t argument =
      method->takes_argument ? scanner.Integer(method->least, method->most, "argument") : 0;
  scanner.Expect(')');
  scanner.ExpectEnd();
  return {&*method, argument};
}

/// Empties the variables of texts at the end: a block does not free the texts that it refers to.
class TextsFreed {
 public:
  explicit TextsFreed(SharedVariables& vars) : vars_(vars) {}
  TextsFreed(const TextsFreed&) = delete;
  TextsFreed& operator=(const TextsFreed&) = delete;
  ~TextsFreed() { vars_.EmptyTexts(); }

 private:
  SharedVariables& vars_;
};

/// The shared variables as a host opens them and a record fills them.
class HostSide {
 public:
  HostSide(Reader& reader, SharedVariables& vars, std::int64_t longest_data)
      : reader_(reader), vars_(vars), longest_data_(longest_data) {}

  /// Fills them with the section [before]; `item` is then the item behind it.
  void Fill(Item& item) {
    vars_.OpenMainGroup(0,
                        [] { throw std::runtime_error("the shared variables cannot be created"); });
    HeldAssignments held;  // until there is a data buffer
    for (reader_.Next(item); item.kind == Item::Kind::kAssignment; reader_.Next(item)) {
      const Assignment& assignment = item.assignment;
      if (!data_open_ && !OfMainGroup(*assignment.variable)) {
        if (held.Add(item)) continue;
        throw reader_.Error(item.line,
                            "quorinbuflength(0) must come before this much of the data buffer");
      }
      StoreAt(item.line, assignment);
      if (assignment.variable == &vars_.quorinbuflength && assignment.index == 0) {
        OpenData(item.line);
      }
    }
    if (!data_open_) OpenData(item.line);
    for (const auto& [line, assignment] : held) StoreAt(line, assignment);
  }

 private:
  bool OfMainGroup(const SharedVariable& variable) const {
    return &variable != &vars_.quorinibuffer && &variable != &vars_.quorinibuffer66;
  }

  void StoreAt(std::uint64_t line, const Assignment& assignment) {
    try {
      Store(assignment);
    } catch (const TextError& error) {
      throw reader_.Error(line, error.what());
    }
  }

  void OpenData(std::uint64_t line) {
    if (data_open_) throw reader_.Error(line, "quorinbuflength(0) is given twice");
    const std::int64_t length = vars_.quorinbuflength[0];
    const auto refuse = [this, line, length] {
      throw reader_.Error(
          line,
          fmt::format("quorinbuflength(0) = {}; a data buffer of this length cannot be created",
                      length));
    };
    if (length > longest_data_) {
      throw reader_.Error(
          line, fmt::format("quorinbuflength(0) = {}; must be at most {}", length, longest_data_));
    }
    if (vars_.DataBufferLength() < 1) refuse();
    vars_.OpenDataBuffers(vars_.DataBufferLength(), refuse);
    data_open_ = true;
  }

  Reader& reader_;
  SharedVariables& vars_;
  std::int64_t longest_data_;
  bool data_open_ = false;
};

HostCall ReadHostCall(Reader& reader, Item& item) {
  reader.Next(item);
  const std::uint64_t line = item.line;
  const bool call = item.kind == Item::Kind::kHostCall;
  const std::string text = call ? item.host_call : std::string();
  if (call) reader.Next(item);
  try {
    return TakeHostCall(text);
  } catch (const TextError& error) {
    throw reader.Error(line, error.what());
  }
}

}  // namespace

Verdict PlayRecord(std::istream& in, const std::string& name, const PlayOptions& options) {
  if (clsMemMapped().findnum() != 0) {
    throw std::runtime_error("the shared variables of instance 0 are in use");
  }
  SharedVariables vars;
  Reader reader(in, name, vars);
  Item item;
  const TextsFreed texts_freed(vars);
  HostSide(reader, vars, options.longest_data).Fill(item);
  const HostCall call = ReadHostCall(reader, item);

  Playback playback(reader, vars, options.keep_calls);
  PlayedProgrammer programmer(playback);
  PlayedDesktop desktop(playback, vars);
  Library library(programmer, desktop);
  library.around_request = [&playback](std::string_view, SharedVariables& own,
                                       Programmer& its_programmer, platform::Desktop& its_desktop,
                                       const Library::CarryOut& carry_out) {
    playback.RecogniseTargetsIn(own);
    carry_out(its_programmer, its_desktop);
  };
  clsMPU mpu(library);
  std::int16_t instance = 0;
  mpu.bufcommpu4(instance);
  call.method->call(mpu, call.argument);
  playback.Finish();
  return {playback.calls(), playback.difference()};
}

}  // namespace fliglaf::record
