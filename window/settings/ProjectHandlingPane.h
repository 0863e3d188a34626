// The Project Handling pane of the settings window.
#pragma once

#include <functional>

#include "settings/ui/PreferenceView.h"
#include "window/controls/FormPane.h"

class QCheckBox;
class QLabel;

namespace vantory {

class BoundControls;

class ProjectHandlingPane : public FormPane {
 public:
  explicit ProjectHandlingPane(BoundControls& controls);

  std::function<void()> onVantory;
  std::function<void()> onFinalCutStudio;

  void setStatus(const HandlerStatus& status);

 protected:
  void changeEvent(QEvent* event) override;

 private:
  QWidget* makeButtons();
  void colourStatus();

  QLabel* const status_;
  QLabel* const note_;
  QCheckBox* const keystroke_;
  HandlerStatus::Colour colour_ = HandlerStatus::Colour::Red;
};

}  // namespace vantory
