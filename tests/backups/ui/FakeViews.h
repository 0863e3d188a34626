// The parts of a window, recording what controllers do with them.
#pragma once

#include <map>
#include <optional>
#include <string>
#include <vector>

#include "backups/ui/Controls.h"
#include "backups/ui/OutlineView.h"
#include "services/messages/ProgressSheet.h"

namespace vantory::test {

class FakeOutline : public OutlineView {
 public:
  void reloadData() override {}
  void reloadItem(const OutlineItemPointer& item, bool) override { reloadedItems.push_back(item); }
  void setHeaderState(State state) override { headerState = state; }
  void setSortIndicator(const std::string& column, SortIndicator indicator) override { indicators[column] = indicator; }
  void setRemark(const std::string& text) override { remark = text; }
  OutlineItemPointer selectedItem() const override { return selected; }
  void selectItem(const OutlineItemPointer& item) override { selected = item; }

  std::string remark;
  std::optional<State> headerState;
  std::vector<OutlineItemPointer> reloadedItems;
  std::map<std::string, SortIndicator> indicators;
  OutlineItemPointer selected;
};

class FakeButton : public Button {
 public:
  void setEnabled(bool value) override { enabled = value; }
  void setTitle(const std::string& text) override { title = text; }
  void setRemark(const std::string& text) override { remark = text; }

  bool enabled = true;
  std::string title;
  std::string remark;
};

class FakeBusyIndicator : public BusyIndicator {
 public:
  void startAnimation() override { isTurning = true; }
  void stopAnimation() override { isTurning = false; }

  bool isTurning = false;
};

class FakeProgressSheet : public ProgressSheet {
 public:
  void show() override { isShown = mayCancel = true; }
  void hide() override { isShown = false; }
  void setLabel(const std::string& text) override { labels.push_back(text); }
  void disableCancel() override { mayCancel = false; }
  void setIndeterminate() override { maximum = 0; }
  void setMaximum(double value) override { maximum = value; }
  void setValue(double number) override { value = number; }

  bool isShown = false;
  bool mayCancel = true;
  std::vector<std::string> labels;
  double maximum = 0;
  double value = 0;
};

class FakeFileChooser : public FileChooser {
 public:
  std::vector<std::string> choose(const Request& asked) override {
    request = asked;
    return answer;
  }

  Request request;
  std::vector<std::string> answer;
};

}  // namespace vantory::test
