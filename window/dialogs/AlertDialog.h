// A question or a message that belongs to a window.
#pragma once

#include <QDialog>
#include <QPointer>
#include <chrono>
#include <functional>
#include <string>
#include <vector>

namespace vantory {

class AlertDialog : public QDialog {
 public:
  struct Texts {
    std::string message;
    std::string information;
    // One to three, from left to right; the first is the default button.
    std::vector<std::string> buttons;
  };

  AlertDialog(const Texts& texts, QWidget* parent);

  // Shows it; `answered` is told the button's number, once: also when the window closes or goes. Escape is the second
  // button, or the only one. After the interval, unless it is zero, the default button is pressed by itself.
  void ask(std::function<void(int button)> answered, std::chrono::milliseconds interval);

  void done(int button) override;
  void reject() override;
  ~AlertDialog() override;

 private:
  void answer(int button);

  QPointer<QWidget> below_;  // what it lies over, if anything
  const int buttonCount_;
  std::function<void(int)> answered_;
};

}  // namespace vantory
