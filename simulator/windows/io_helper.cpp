#include "simulator/windows/io_helper.h"

#include <cstdio>
#include <exception>
#include <string>

#include "simulator/windows/simulated_components.h"

namespace fliglaf::simulator {
namespace {

/// Helper objects that live; they share one bench.
int& Helpers() {
  static int helpers = 0;
  return helpers;
}

/// Says on the debugger's channel and on standard error what a host without a log cannot show.
void Say(const char* text) noexcept {
  std::fprintf(stderr, "fliglaf simulator: %s\n", text);
  OutputDebugStringA(text);
}

void Complain(const std::exception& error) noexcept { Say(error.what()); }

/// Carries out an operation; no exception leaves the module.
template <class Operation>
HRESULT Perform(const Operation& operation) noexcept {
  try {
    operation(TheComponents().programmer());
    return S_OK;
  } catch (const ComponentError& error) {
    return error.hresult() == 0 ? E_FAIL : static_cast<HRESULT>(error.hresult());
  } catch (const std::exception& error) {
    Complain(error);
    return E_FAIL;
  }
}

/// The same for an operation with a result.
template <class Operation>
HRESULT Answer(VARIANT* result, const Operation& operation) noexcept {
  return Perform([&](Programmer& programmer) {
    result->vt = VT_I4;
    result->lVal = operation(programmer);
  });
}

}  // namespace

HRESULT IoHelper::Create(REFIID iid, void** object) noexcept {
  try {
    return platform::MakeObject<IoHelper>()->QueryInterface(iid, object);
  } catch (const std::exception& error) {
    Complain(error);
    return E_INVALIDARG;
  }
}

IoHelper::IoHelper() {
  static_cast<void>(TheComponents());
  ++Helpers();
}

IoHelper::~IoHelper() {
  if (--Helpers() > 0) return;
  try {
    for (const std::string& line : TheComponents().FaultReport()) Say(line.c_str());
    EndComponents();
  } catch (const std::exception& error) {
    Complain(error);
  }
}

HRESULT IoHelper::EndRun() noexcept {
  return Perform([](Programmer&) { TheComponents().EndRun(); });
}

HRESULT IoHelper::SetVcc(LONG* mV, VARIANT* result) noexcept {
  return Answer(result, [=](Programmer& to) { return to.SetVcc(*mV); });
}

HRESULT IoHelper::SetVpp(LONG* mV, BYTE* channel, VARIANT* result) noexcept {
  return Answer(result, [=](Programmer& to) { return to.SetVpp(*mV, *channel); });
}

HRESULT IoHelper::SetGndPin(BYTE* pin, BYTE* state) noexcept {
  return Perform([=](Programmer& to) { to.SetGndPin(*pin, *state); });
}

HRESULT IoHelper::SetVccPin(BYTE* pin, BYTE* state) noexcept {
  return Perform([=](Programmer& to) { to.SetVccPin(*pin, *state); });
}

HRESULT IoHelper::SetVppPin(BYTE* pin, BYTE* state) noexcept {
  return Perform([=](Programmer& to) { to.SetVppPin(*pin, *state); });
}

HRESULT IoHelper::SetOutputs(LONG* value, VARIANT* result) noexcept {
  return Answer(result, [=](Programmer& to) { return to.SetOutputs(*value); });
}

HRESULT IoHelper::SignalPass(LONG* value) noexcept {
  return Perform([=](Programmer& to) { to.SignalPass(*value); });
}

HRESULT IoHelper::SignalFail(LONG* value) noexcept {
  return Perform([=](Programmer& to) { to.SignalFail(*value); });
}

HRESULT IoHelper::OpenProgrammer(VARIANT* result) noexcept {
  return Answer(result, [](Programmer& to) { return to.OpenProgrammer(); });
}

HRESULT IoHelper::WriteRegister(LONG* value, BYTE* number, VARIANT* result) noexcept {
  return Answer(result, [=](Programmer& to) { return to.WriteRegister(*value, *number); });
}

HRESULT IoHelper::ReadRegister(BYTE* number, VARIANT* result) noexcept {
  return Answer(result, [=](Programmer& to) { return to.ReadRegister(*number); });
}

HRESULT IoHelper::WriteLatch(LONG* value, BYTE* latch, VARIANT* result) noexcept {
  return Answer(result, [=](Programmer& to) { return to.WriteLatch(*value, *latch); });
}

HRESULT IoHelper::DelayMs(LONG* ms, VARIANT* result) noexcept {
  return Answer(result, [=](Programmer& to) { return to.DelayMs(*ms); });
}

HRESULT IoHelper::ShortDelay(LONG* duration, VARIANT* result) noexcept {
  return Answer(result, [=](Programmer& to) { return to.ShortDelay(*duration); });
}

HRESULT IoHelper::QueueRegisterWrite(LONG* value, BYTE* number, VARIANT* result) noexcept {
  return Answer(result, [=](Programmer& to) { return to.QueueRegisterWrite(*value, *number); });
}

HRESULT IoHelper::FlushQueue(VARIANT* result) noexcept {
  return Answer(result, [](Programmer& to) { return to.FlushQueue(); });
}

HRESULT IoHelper::QueueDelay(LONG* duration, VARIANT* result) noexcept {
  return Answer(result, [=](Programmer& to) { return to.QueueDelay(*duration); });
}

HRESULT IoHelper::ReportStartupFailure() noexcept {
  return Perform([](Programmer& to) { to.ReportStartupFailure(); });
}

HRESULT IoHelper::SetFigMode(BYTE* mode, VARIANT* result) noexcept {
  return Answer(result, [=](Programmer& to) { return to.SetFigMode(*mode); });
}

HRESULT IoHelper::EndProgramming(LONG* page, LONG* zero, LONG* data, LONG* address,
                                 VARIANT* result) noexcept {
  return Answer(result,
                [=](Programmer& to) { return to.EndProgramming(*page, *zero, *data, *address); });
}

HRESULT IoHelper::BlockTransfer(LONG* data, LONG* address, SHORT* check_mode,
                                VARIANT* result) noexcept {
  return Answer(result,
                [=](Programmer& to) { return to.BlockTransfer(*data, *address, *check_mode); });
}

HRESULT IoHelper::ResetInterface() noexcept {
  return Perform([](Programmer& to) { to.ResetInterface(); });
}

}  // namespace fliglaf::simulator
