#include "usb/request/operation.h"

#include "usb/request/notes.h"

namespace fliglaf {

void RunNoted(EngineRun& run, std::int16_t code, const std::function<void()>& routine) {
  SharedVariables& vars = run.vars;
  vars.quorinprgresult[0] = result::kSuccess;
  run.RangeStart = vars.quorinwltbigendbuf[0];
  run.RangeEnd = vars.quorinwltbigendbuf[1];
  vars.quorinprgmode[1] = 0;
  NoteStart(run, code);
  vars.quorinprgmode[1] = 1;
  vars.quorinprgmode[2] = 0;
  run.desktop.DoEvents();
  routine();
  if (code == operation::kCompare) NoteListing(run);
  NoteResult(run, code);
}

}  // namespace fliglaf
