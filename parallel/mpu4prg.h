#pragma once

#include <cstdint>
#include <memory>

#include "platform/desktop.h"
#include "platform/form.h"
#include "shared/shared_variables.h"
#include "usb/components/programmer.h"
#include "usb/request/engine_run.h"

namespace fliglaf {

/// The operation window of the parallel-port engine: runs one request of the host, then is
/// unloaded. It is loaded but never shown; the host's stop request is what its Stop button does.
class mpu4prg {
 public:
  /// Keeps the variables open while the window lives.
  mpu4prg(std::shared_ptr<SharedVariables> variables, Programmer& programmer,
          platform::Desktop& desktop);

  /// Runs the whole request. Failures are left in quorinprgresult(0) and the log; no exception
  /// leaves, and on every way out the run has been ended with EndRun.
  void wmpu0();

  /// Judges a byte read from the device: see parallel/page_operations.h.
  [[nodiscard]] std::int32_t dataout(std::int16_t data, std::int32_t address, std::int16_t mode);

  /// Announces a verify pass: see prgnote1 in usb/request/notes.h.
  void prgnote1(std::uint8_t pass);

  void Form_Load();
  void Timer1_Timer();

  [[nodiscard]] const platform::Form& form() const { return form_; }

  /// The Stop button.
  platform::Button pexit;

 private:
  void Request();
  void RunOperation(std::int16_t code);

  std::shared_ptr<SharedVariables> vars_;
  platform::Form form_;
  platform::Timer Timer1;
  EngineRun run_;
};

}  // namespace fliglaf
