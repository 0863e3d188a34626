// The three-state check box in a column's header.
#pragma once

#include <QCheckBox>
#include <functional>

#include "catalog/States.h"

namespace vantory {

// Shows what it is told; a click, the space bar or an assistive technology only says that it was clicked.
class QWHeaderCheckCell : public QCheckBox {
 public:
  explicit QWHeaderCheckCell(QWidget* parent);

  void setState(State state);

  std::function<void()> onClick;

 protected:
  void nextCheckState() override;
  void checkStateSet() override;

 private:
  State state_ = Off;
  bool settingState_ = false;
};

}  // namespace vantory
