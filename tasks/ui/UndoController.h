// Edit > Undo, and the list of what was done lately.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "services/messages/NotificationCenter.h"

namespace vantory {

class Button;
class QWProgressController;

// A task of the list.
struct UndoRow {
  std::string receipt;  // its name
  std::string date;     // local
  std::string title;
  std::string state;
  bool canBeUndone = false;
};

// Main thread. What it is given outlives it. Receipts are read and tasks taken back on another thread.
class UndoController {
 public:
  struct Parts {
    Button& command;  // names the task that it takes back
    QWProgressController& progress;
    // Has the pane of the library select what came back there; any thread. May be empty.
    std::function<void(const std::string& path)> selectBackup = {};
  };

  explicit UndoController(const Parts& parts);

  // Looks anew which task the command would take back. Returns before that is done.
  void reload();
  // Reads all receipts, and hands their rows, the newest first, to `show` on the main thread. Returns before that is
  // done.
  static void list(std::function<void(const std::vector<UndoRow>& rows)> show);
  // As reload(), and lists the library and what is there anew, where another process has done something. Main thread.
  void followOthers();
  // Called when the receipts may be others than before.
  std::function<void()> onReload;

  // Takes the newest task that was not taken back, and tells the person how that went.
  void undo();
  void undo(const std::string& receipt);

 private:
  // Worker threads.
  void readReceipts();
  void readEverything();
  bool takeBack(const std::string& receipt);

  const Parts parts_;
  std::vector<std::string> known_;  // all receipts, also such as cannot be read
  bool isOneRunning_ = false;
  std::string newest_;  // empty where there is nothing to take back
  NotificationCenter::Observation refresh_;
};

}  // namespace vantory
