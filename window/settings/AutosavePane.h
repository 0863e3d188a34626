// The Autosave pane of the settings window.
#pragma once

#include "window/controls/FormPane.h"

namespace vantory {

class BoundControls;

class AutosavePane : public FormPane {
 public:
  explicit AutosavePane(BoundControls& controls);
};

}  // namespace vantory
