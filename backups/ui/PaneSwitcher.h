// What a pane asks of the main window.
#pragma once

namespace vantory {

class PaneSwitcher {
 public:
  virtual ~PaneSwitcher() = default;
  // Shows that pane. Main thread.
  virtual void toolbarBackup() = 0;
  virtual void toolbarRestore() = 0;
};

}  // namespace vantory
