// Lays the window out.
#include "window/panes/ComparisonWindow.h"

#include <QFrame>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>

#include "window/appearance/DisplayText.h"
#include "window/controls/Command.h"
#include "window/controls/PushButton.h"
#include "window/controls/Spinner.h"
#include "window/outline/OutlineTree.h"
#include "window/outline/QWOutlineView.h"

namespace vantory {

namespace {

std::vector<OutlineColumn> columns() {
  return {{.identifier = "name", .title = QStringLiteral("Name")},
          {.identifier = "now", .title = QStringLiteral("Now"), .width = 190},
          {.identifier = "backup", .title = QStringLiteral("In the Backup"), .width = 190}};
}

}  // namespace

ComparisonWindow::ComparisonWindow(QWidget* parent)
    : QDialog(parent),
      status_(new QLabel(this)),
      outline_(new QWOutlineView(columns(), QStringLiteral("Differences"))),
      spinner_(new Spinner(this)),
      restore_(new Command(QStringLiteral("&Restore Selected…"), this)) {
  resize(760, 500);
  status_->setWordWrap(true);
  auto* frame = new QFrame(this);
  frame->setFrameStyle(static_cast<int>(QFrame::StyledPanel) | static_cast<int>(QFrame::Sunken));
  auto* inFrame = new QVBoxLayout(frame);
  inFrame->setContentsMargins(1, 1, 1, 1);
  inFrame->addWidget(outline_);
  auto* close = new PushButton(QStringLiteral("&Close"), this);
  close->setAutoDefault(false);
  connect(close, &QPushButton::clicked, this, &QDialog::reject);
  QPushButton* restoreButton = restore_->makeButton(this);
  restoreButton->setDefault(true);
  connect(this, &QDialog::finished, this, [this] {
    if (onClose) onClose();
  });

  auto* buttons = new QHBoxLayout;
  buttons->setSpacing(8);
  buttons->addWidget(spinner_);
  buttons->addStretch();
  buttons->addWidget(close);
  buttons->addWidget(restoreButton);
  auto* layout = new QVBoxLayout(this);
  layout->setContentsMargins(14, 14, 14, 14);
  layout->setSpacing(10);
  layout->addWidget(status_);
  layout->addWidget(frame, 1);
  layout->addLayout(buttons);
  outline_->setFocus();
}

void ComparisonWindow::show(const std::string& title) {
  setWindowTitle(displayText(title));
  QDialog::show();
  raise();
  activateWindow();
}

OutlineView& ComparisonWindow::rows() {
  return *outline_;
}

// Down to the files; their keys are opened by whoever wants to see them. The keyboard begins with the first.
void ComparisonWindow::openRows() {
  OutlineTree& tree = outline_->tree();
  tree.expandToDepth(1);
  if (!tree.currentIndex().isValid()) tree.setCurrentIndex(tree.model()->index(0, 0));
}

void ComparisonWindow::setStatus(const std::string& sentence, bool isBusy) {
  status_->setText(displayText(sentence));
  // The spinner counts how often it was started.
  if (isBusy == isBusy_) return;
  isBusy_ = isBusy;
  isBusy ? spinner_->startAnimation() : spinner_->stopAnimation();
}

Button& ComparisonWindow::restoreCommand() {
  return *restore_;
}

}  // namespace vantory
