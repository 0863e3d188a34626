// The main window, recording what controllers do with it.
#pragma once

#include <vector>

#include "tasks/ui/MainWindowView.h"

namespace vantory::test {

class FakeMainWindow : public MainWindowView {
 public:
  void showPane(Pane pane) override { shown.push_back(pane); }
  void removeLinkItem() override {}
  void bringToFront() override { ++timesInFront; }
  void showWarning(const std::string& text) override { warning = text; }

  std::vector<Pane> shown;
  int timesInFront = 0;
  std::string warning;
};

}  // namespace vantory::test
