// A push button with room around its title.
#pragma once

#include <QPushButton>

namespace vantory {

class PushButton : public QPushButton {
 public:
  using QPushButton::QPushButton;

  QSize sizeHint() const override {
    const QSize size = QPushButton::sizeHint();
    return {size.width() + 18, qMax(size.height(), fontMetrics().height() + 12)};
  }
  QSize minimumSizeHint() const override { return sizeHint(); }
};

}  // namespace vantory
