// A small wheel that turns while something is being done.
#pragma once

#include <QTimer>
#include <QWidget>

#include "backups/ui/Controls.h"

namespace vantory {

// Takes no place on the screen's eye while it stands still. Starts are counted: it stops with the last.
class Spinner : public QWidget, public BusyIndicator {
 public:
  explicit Spinner(QWidget* parent);

  void startAnimation() override;
  void stopAnimation() override;
  bool isTurning() const { return turning_ > 0; }

  QSize sizeHint() const override { return {20, 20}; }

 protected:
  void paintEvent(QPaintEvent* event) override;

 private:
  void showState();

  QTimer timer_;
  int turning_ = 0;
  int step_ = 0;
};

}  // namespace vantory
