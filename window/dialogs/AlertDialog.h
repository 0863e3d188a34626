// A question or a message that belongs to a window.
#pragma once

#include <QDialog>
#include <QPointer>
#include <chrono>
#include <functional>
#include <string>
#include <vector>

#include "services/messages/QWAlert.h"

class QHBoxLayout;
class QLabel;

namespace vantory {

class ResultList;

class AlertDialog : public QDialog {
 public:
  struct Texts {
    std::string message;
    std::string information;
    // One to three, from left to right; the first is the default button.
    std::vector<std::string> buttons;
    // What became of each of several files; empty for an alert without a list.
    std::vector<AlertRow> rows = {};
    bool isDismissedByDefault = false;
  };
  // What the person may ask for beside an answer, where there are rows.
  struct Shows {
    std::function<void(const std::string& path)> reveal;
    std::function<void()> log;
  };

  AlertDialog(const Texts& texts, QWidget* parent, const Shows& shows = {});

  // Shows it; `answered` is told the button's number, once: also when the window closes or goes. Escape is the second
  // button, or the only one, or the default one where the texts say so. After the interval, unless it is zero, the
  // default button is pressed by itself.
  void ask(std::function<void(int button)> answered, std::chrono::milliseconds interval);

  void done(int button) override;
  void reject() override;
  ~AlertDialog() override;

 private:
  QLabel* wordsBelow(ResultList& list);
  void addListButtons(QHBoxLayout& buttons, ResultList& list, const Shows& shows);
  void answer(int button);

  QPointer<QWidget> below_;  // what it lies over, if anything
  const int dismissal_;      // the button that closing it stands for
  std::function<void(int)> answered_;
};

}  // namespace vantory
