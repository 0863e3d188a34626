// Paints the check box.
#include "window/outline/QWHeaderCheckCell.h"

#include <QScopedValueRollback>
#include <QTimer>

namespace vantory {

QWHeaderCheckCell::QWHeaderCheckCell(QWidget* parent) : QCheckBox(parent) {
  setTristate(true);
  setAccessibleName(QStringLiteral("All"));
  setToolTip(QStringLiteral("Tick or untick all"));
}

void QWHeaderCheckCell::setState(State state) {
  state_ = state;
  const QScopedValueRollback setting(settingState_, true);
  setCheckState(state == Mixed ? Qt::PartiallyChecked : state == On ? Qt::Checked : Qt::Unchecked);
}

// Whoever hears of the click decides about the state.
void QWHeaderCheckCell::nextCheckState() {
  if (onClick) onClick();
}

// Assistive technologies toggle the box itself, which is then put back.
void QWHeaderCheckCell::checkStateSet() {
  QCheckBox::checkStateSet();
  if (settingState_) return;
  QTimer::singleShot(0, this, [this] {
    setState(state_);
    nextCheckState();
  });
}

}  // namespace vantory
