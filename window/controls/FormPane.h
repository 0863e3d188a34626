// A pane of controls, one below the other, each with a sentence that explains it.
#pragma once

#include <QWidget>

class QLabel;
class QSpinBox;
class QVBoxLayout;

namespace vantory {

class FormPane : public QWidget {
 public:
  FormPane();

 protected:
  // A row of its own; the explanation below it is read out with the control.
  void add(QWidget* control, const QString& explanation);
  // "Every [ 7 ] days": the ampersand in `before` leads to the number.
  void addNumber(const QString& before, QSpinBox* number, const QString& after, const QString& explanation);
  void addRow(QWidget* row);
  void addSpace();
  // A text of several lines in smaller letters.
  QLabel* makeExplanation(const QString& text);

 private:
  QVBoxLayout* const rows_;
};

}  // namespace vantory
