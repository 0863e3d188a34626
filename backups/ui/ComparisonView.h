// The window that shows what a backup would change, as its controller sees it.
#pragma once

#include <string>

namespace vantory {

class Button;
class OutlineView;

// Main thread.
class ComparisonView {
 public:
  virtual ~ComparisonView() = default;

  virtual void show(const std::string& title) = 0;
  virtual OutlineView& rows() = 0;
  // Opens the rows of applications and items.
  virtual void openRows() = 0;
  // A sentence about the whole, and whether something is going on.
  virtual void setStatus(const std::string& sentence, bool isBusy) = 0;
  virtual Button& restoreCommand() = 0;
};

}  // namespace vantory
