// The Lock pane's widgets.
#pragma once

#include "window/outline/OutlinePane.h"

namespace vantory {

class LockPane : public OutlinePane {
 public:
  LockPane();

  // Looks at the files' locks again.
  Command& refreshCommand() { return refresh_; }

 private:
  Command& refresh_;
};

}  // namespace vantory
