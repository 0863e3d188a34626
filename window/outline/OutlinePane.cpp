// Lays the pane out.
#include "window/outline/OutlinePane.h"

#include <QFrame>
#include <QHBoxLayout>
#include <QLabel>
#include <QMenu>
#include <QPushButton>
#include <QVBoxLayout>
#include <utility>

#include "window/controls/Command.h"
#include "window/controls/Spinner.h"
#include "window/outline/QWOutlineView.h"

namespace vantory {

namespace {

constexpr int kMargin = 14;

// The outline keeps its own background and stands in one frame.
QFrame* framed(QWidget* content, QWidget* parent) {
  auto* frame = new QFrame(parent);
  frame->setFrameStyle(static_cast<int>(QFrame::StyledPanel) | static_cast<int>(QFrame::Sunken));
  auto* layout = new QVBoxLayout(frame);
  layout->setContentsMargins(1, 1, 1, 1);
  layout->addWidget(content);
  return frame;
}

}  // namespace

OutlinePane::OutlinePane(const QString& caption, std::vector<OutlineColumn> columns, const QString& name)
    : outline_(new QWOutlineView(std::move(columns), name)), spinner_(new Spinner(this)), buttons_(new QHBoxLayout) {
  auto* sentence = new QLabel(caption, this);
  sentence->setWordWrap(true);
  buttons_->setSpacing(8);
  buttons_->addStretch();
  buttons_->addWidget(spinner_);
  auto* layout = new QVBoxLayout(this);
  layout->setContentsMargins(kMargin, kMargin, kMargin, kMargin);
  layout->setSpacing(10);
  layout->addWidget(sentence);
  layout->addWidget(framed(outline_, this), 1);
  layout->addLayout(buttons_);
  setFocusProxy(outline_);
}

Command& OutlinePane::addCommand(const QString& title, const QKeySequence& shortcut) {
  auto* command = new Command(title, this);
  command->setShortcut(shortcut);
  commands_.append(command);
  return *command;
}

void OutlinePane::addCommandsTo(QMenu& menu) const {
  for (QAction* command : commands_) {
    if (command)
      menu.addAction(command);
    else
      menu.addSeparator();
  }
}

// Null stands for a line between the commands of the menu.
void OutlinePane::addSeparator() {
  commands_.append(nullptr);
}

// From the left, in the order in which they are added.
void OutlinePane::addButton(Command& command) {
  buttons_->insertWidget(leadingButtons_++, command.makeButton(this));
}

// Behind the space and the spinner, at the right end; before it what is to be known of the command.
void OutlinePane::addMainButton(Command& command) {
  auto* remark = new QLabel(this);
  connect(&command, &QAction::changed, remark, [remark, &command] { remark->setText(command.statusTip()); });
  buttons_->insertWidget(leadingButtons_ + 1, remark);
  QPushButton* button = command.makeButton(this);
  button->setDefault(true);
  buttons_->addWidget(button);
}

}  // namespace vantory
