// Keeps button, menu item and shortcut in step.
#include "window/controls/Command.h"

#include "window/appearance/DisplayText.h"
#include "window/controls/Mnemonics.h"
#include "window/controls/PushButton.h"

namespace vantory {

namespace {

// The letter behind the ampersand; none without one.
QChar mnemonicOf(const QString& title) {
  const auto position = title.indexOf(QLatin1Char('&'));
  return position >= 0 && position + 1 < title.size() ? title.at(position + 1) : QChar();
}

}  // namespace

Command::Command(const QString& title, QObject* parent) : QAction(title, parent), mnemonic_(mnemonicOf(title)) {}

void Command::setEnabled(bool enabled) {
  QAction::setEnabled(enabled);
}

void Command::setTitle(const std::string& title) {
  setText(withMnemonic(displayText(title), mnemonic_));
}

void Command::setRemark(const std::string& text) {
  setStatusTip(displayText(text));
}

// The button takes text, state and explanation from the action, now and whenever that changes.
QPushButton* Command::makeButton(QWidget* parent) {
  auto* button = new PushButton(parent);
  const auto follow = [this, button] {
    button->setText(text());
    button->setEnabled(isEnabled());
    button->setToolTip(statusTip());
    button->setAccessibleDescription(statusTip());
  };
  follow();
  connect(this, &QAction::changed, button, follow);
  connect(button, &QPushButton::clicked, this, &QAction::trigger);
  return button;
}

}  // namespace vantory
