#pragma once

#include <cstdint>
#include <memory>

#include "families/lines.h"
#include "platform/desktop.h"
#include "platform/form.h"
#include "shared/shared_variables.h"
#include "usb/components/programmer.h"
#include "usb/request/run.h"

namespace fliglaf {

/// The operation window of the USB engine: runs one request of the host, then is unloaded. It is
/// loaded but never shown; the host's stop request is what its Stop button does.
class usbmpu4prg {
 public:
  /// Keeps the variables open while the window lives.
  usbmpu4prg(std::shared_ptr<SharedVariables> variables, Programmer& programmer,
             platform::Desktop& desktop);

  /// Runs the whole request. Failures are left in quorinprgresult(0) and the log; no exception
  /// leaves, and on every way out but a failed start the run has been ended with EndRun.
  void wmpu0();

  /// Announces a verify pass: see prgnote1 in usb/request/notes.h.
  void prgnote1(std::uint8_t pass);

  void Form_Load();
  void Form_Resize();
  void Timer1_Timer();
  void Timer2_Timer();

  [[nodiscard]] const platform::Form& form() const { return form_; }

  /// The Stop button.
  platform::Button pexit;

 private:
  void Request();

  std::shared_ptr<SharedVariables> vars_;
  Programmer& programmer_;
  platform::Form form_;
  platform::Timer Timer1;
  platform::Timer Timer2;
  WindowLines lines_;
  Run run_;
};

}  // namespace fliglaf
