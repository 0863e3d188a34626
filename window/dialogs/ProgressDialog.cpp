// Lays out the sheet.
#include "window/dialogs/ProgressDialog.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QProgressBar>
#include <QVBoxLayout>
#include <algorithm>
#include <cmath>

#include "window/appearance/DisplayText.h"
#include "window/controls/PushButton.h"

namespace vantory {

namespace {

constexpr double kSteps = 100;  // of the bar for each unit

}  // namespace

ProgressDialog::ProgressDialog(QWidget* parent)
    : QDialog(parent),
      label_(new QLabel(this)),
      bar_(new QProgressBar(this)),
      cancelButton_(new PushButton(QStringLiteral("&Cancel"), this)) {
  setWindowModality(Qt::WindowModal);
  setWindowTitle(parent ? parent->windowTitle() : QString());
  bar_->setTextVisible(false);
  bar_->setMinimumWidth(320);
  bar_->setAccessibleName(QStringLiteral("Progress"));
  cancelButton_->setAutoDefault(false);
  connect(cancelButton_, &QPushButton::clicked, this, [this] { reject(); });
  auto* buttons = new QHBoxLayout;
  buttons->addStretch();
  buttons->addWidget(cancelButton_);
  auto* layout = new QVBoxLayout(this);
  layout->setContentsMargins(20, 18, 20, 16);
  layout->setSpacing(10);
  layout->addWidget(label_);
  layout->addWidget(bar_);
  layout->addLayout(buttons);
  layout->setSizeConstraint(QLayout::SetFixedSize);
}

// It is shown again and again, and the last task may have been cancelled.
void ProgressDialog::show() {
  cancelButton_->setEnabled(true);
  QDialog::open();
}

void ProgressDialog::hideCancelButton() {
  cancelButton_->hide();
}

void ProgressDialog::hide() {
  QDialog::hide();
}

void ProgressDialog::setLabel(const std::string& text) {
  label_->setText(displayText(text));
  setAccessibleName(label_->text());
}

// A bar without an end runs to and fro.
void ProgressDialog::setIndeterminate() {
  bar_->setRange(0, 0);
}

// Never of no length, which would be a bar without an end.
void ProgressDialog::setMaximum(double maximum) {
  bar_->setRange(0, static_cast<int>(std::lround(std::max(maximum, 0.01) * kSteps)));
}

void ProgressDialog::setValue(double value) {
  if (bar_->maximum() > 0) bar_->setValue(static_cast<int>(std::lround(value * kSteps)));
}

void ProgressDialog::disableCancel() {
  cancelButton_->setEnabled(false);
}

// Once: a task that has been told needs its time to stop.
void ProgressDialog::reject() {
  if (cancelButton_->isHidden() || !cancelButton_->isEnabled()) return;
  cancelButton_->setEnabled(false);
  if (onCancel) onCancel();
}

}  // namespace vantory
