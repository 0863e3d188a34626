// Draws the wheel.
#include "window/controls/Spinner.h"

#include <QPainter>
#include <chrono>

namespace vantory {

namespace {

using namespace std::chrono_literals;

constexpr int kSpokes = 12;

}  // namespace

Spinner::Spinner(QWidget* parent) : QWidget(parent) {
  setFixedSize(sizeHint());
  // Twelve of these steps make a turn of about a second.
  timer_.setInterval(80ms);
  connect(&timer_, &QTimer::timeout, this, [this] {
    step_ = (step_ + 1) % kSpokes;
    update();
  });
  showState();
}

void Spinner::startAnimation() {
  ++turning_;
  showState();
}

void Spinner::stopAnimation() {
  turning_ = qMax(0, turning_ - 1);
  showState();
}

// The timer runs only while something turns: a still window wakes nobody.
void Spinner::showState() {
  setAccessibleName(isTurning() ? QStringLiteral("Working") : QString());
  if (isTurning())
    timer_.start();
  else
    timer_.stop();
  update();
}

void Spinner::paintEvent(QPaintEvent*) {
  if (!isTurning()) return;
  QPainter painter(this);
  painter.setRenderHint(QPainter::Antialiasing);
  painter.translate(rect().center() + QPointF(0.5, 0.5));
  QColor colour = palette().color(QPalette::WindowText);
  // Each spoke fainter than the one before it, so that the wheel seems to turn.
  for (int spoke = 0; spoke < kSpokes; ++spoke) {
    colour.setAlphaF(0.15F + 0.75F * static_cast<float>((spoke + kSpokes - step_) % kSpokes) / kSpokes);
    painter.setPen(QPen(colour, 1.8, Qt::SolidLine, Qt::RoundCap));
    painter.save();
    painter.rotate(-360.0 * spoke / kSpokes);
    painter.drawLine(QPointF(0, -4.5), QPointF(0, -8));
    painter.restore();
  }
}

}  // namespace vantory
