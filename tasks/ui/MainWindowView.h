// The main window, as its controller sees it.
#pragma once

#include <string>

namespace vantory {

enum class Pane { Trash, Backup, Lock, Restore };

// Main thread.
class MainWindowView {
 public:
  virtual ~MainWindowView() = default;
  // Puts the pane into the window and marks its toolbar item.
  virtual void showPane(Pane pane) = 0;
  // Takes the toolbar's last item away, which is a link.
  virtual void removeLinkItem() = 0;
  virtual void bringToFront() = 0;
  // A sentence above all panes; empty for none.
  virtual void showWarning(const std::string& text) = 0;
};

}  // namespace vantory
