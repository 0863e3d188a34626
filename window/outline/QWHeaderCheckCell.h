// The three-state check box in a column's header.
#pragma once

#include <QCheckBox>
#include <functional>

namespace vantory {

// Shows what it is told; a click, the space bar or an assistive technology only says that it was clicked.
class QWHeaderCheckCell : public QCheckBox {
 public:
  explicit QWHeaderCheckCell(QWidget* parent);

  // 1 on, 0 off, -1 mixed.
  void setState(int state);

  std::function<void()> onClick;

 protected:
  void nextCheckState() override;
  void checkStateSet() override;

 private:
  int state_ = 0;
  bool settingState_ = false;
};

}  // namespace vantory
