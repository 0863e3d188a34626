// A command of the window: one action behind a button, a menu item and a shortcut.
#pragma once

#include <QAction>
#include <functional>

#include "backups/ui/Controls.h"

class QPushButton;

namespace vantory {

// Enabling and naming it changes all places where it is shown.
class Command : public QAction, public Button {
 public:
  // An ampersand before a letter of the title makes that letter its mnemonic.
  Command(const QString& title, QObject* parent);

  void setEnabled(bool enabled) override;
  // A plain title. The mnemonic letter stays where the new title has it.
  void setTitle(const std::string& title) override;
  // Shown as the status tip.
  void setRemark(const std::string& text) override;

  // A push button for it. The parent owns it.
  QPushButton* makeButton(QWidget* parent);

 private:
  QChar mnemonic_;
};

}  // namespace vantory
