#include "simulator/write_queue.h"

namespace fliglaf::simulator {

void WriteQueue::AddToNewBlock(Entry entry) {
  blocks_.push_back(std::make_unique_for_overwrite<Entry[]>(kBlock));
  next_ = blocks_.back().get();
  end_ = next_ + kBlock;
  Add(entry);
}

}  // namespace fliglaf::simulator
