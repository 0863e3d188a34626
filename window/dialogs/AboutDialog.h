// What the program is, whose it is, and what it stands on.
#pragma once

#include <QDialog>
#include <functional>

namespace vantory {

class AboutDialog : public QDialog {
 public:
  // `home` is the address of the program's page; `openHome` is called for the link to it.
  AboutDialog(const QString& home, const std::function<void()>& openHome, QWidget* parent);
};

}  // namespace vantory
