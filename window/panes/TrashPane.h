// The Trash pane's widgets.
#pragma once

#include "window/outline/OutlinePane.h"

namespace vantory {

class TrashPane : public OutlinePane {
 public:
  TrashPane();

  Command& trashCommand() { return trash_; }

 private:
  Command& trash_;
};

}  // namespace vantory
