// The system's file dialog.
#pragma once

#include <QPointer>
#include <QWidget>

#include "backups/ui/Controls.h"

namespace vantory {

class QtFileChooser : public FileChooser {
 public:
  // Belongs to that window.
  explicit QtFileChooser(QWidget* parent) : parent_(parent) {}

  std::vector<std::string> choose(const Request& request) override;

 private:
  const QPointer<QWidget> parent_;
};

}  // namespace vantory
