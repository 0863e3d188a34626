// Lays out controls and their sentences.
#include "window/controls/FormPane.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QSpinBox>
#include <QVBoxLayout>

namespace vantory {

namespace {

constexpr int kMargin = 20;
constexpr int kIndent = 22;  // below the text of a check box
constexpr int kBetween = 16;
// How large an explanation is beside other text.
constexpr double kSmaller = 0.92;

}  // namespace

FormPane::FormPane() : rows_(new QVBoxLayout(this)) {
  rows_->setContentsMargins(kMargin, kMargin, kMargin, kMargin);
  rows_->setSpacing(4);
  rows_->setAlignment(Qt::AlignTop);
}

QLabel* FormPane::makeExplanation(const QString& text) {
  auto* label = new QLabel(text, this);
  QFont small = label->font();
  small.setPointSizeF(small.pointSizeF() * kSmaller);
  label->setFont(small);
  label->setTextFormat(Qt::PlainText);
  label->setWordWrap(true);
  return label;
}

// Assistive technologies read the explanation out with its control.
void FormPane::add(QWidget* control, const QString& explanation) {
  rows_->addWidget(control, 0, Qt::AlignLeading);
  QLabel* text = makeExplanation(explanation);
  text->setContentsMargins(kIndent, 0, 0, 0);
  rows_->addWidget(text);
  control->setAccessibleDescription(explanation);
  addSpace();
}

// The words before and behind the number are also its name for assistive technologies.
void FormPane::addNumber(const QString& before, QSpinBox* number, const QString& after, const QString& explanation) {
  auto* row = new QWidget(this);
  auto* label = new QLabel(before, row);
  label->setBuddy(number);
  number->setAccessibleName(QString(before).remove(QLatin1Char('&')) + QLatin1Char(' ') + after);
  auto* layout = new QHBoxLayout(row);
  layout->setContentsMargins(0, 0, 0, 0);
  layout->addWidget(label);
  layout->addWidget(number);
  layout->addWidget(new QLabel(after, row));
  layout->addStretch();
  rows_->addWidget(row);
  QLabel* text = makeExplanation(explanation);
  text->setContentsMargins(kIndent, 0, 0, 0);
  rows_->addWidget(text);
  number->setAccessibleDescription(explanation);
  addSpace();
}

void FormPane::addRow(QWidget* row) {
  rows_->addWidget(row);
}

void FormPane::addSpace() {
  rows_->addSpacing(kBetween - rows_->spacing());
}

}  // namespace vantory
