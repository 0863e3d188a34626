#include "window/dialogs/AlertDialog.h"

#include <QApplication>
#include <QHBoxLayout>
#include <QLabel>
#include <QTimer>
#include <QVBoxLayout>
#include <algorithm>
#include <utility>

#include "window/appearance/DisplayText.h"
#include "window/appearance/Icons.h"
#include "window/controls/PushButton.h"

namespace vantory {

namespace {

constexpr int kImageSize = 56;
constexpr int kTextWidth = 360;

// Long names would be cut off at the edge: beyond their beginning a line may end anywhere in them.
QString breakable(const QString& text) {
  constexpr int kLongest = 20;
  QString broken;
  int run = 0;
  for (const QChar character : text) {
    const bool mayBreakAfter = character.isSpace() || character == QLatin1Char('/');
    run = mayBreakAfter ? 0 : run + 1;
    if (run > kLongest && !character.isLowSurrogate() && !character.isMark()) broken += QChar(0x200b);
    broken += character;
  }
  return broken;
}

QLabel* textLabel(const std::string& text, QWidget* parent) {
  auto* label = new QLabel(breakable(displayText(text)), parent);
  label->setTextFormat(Qt::PlainText);
  label->setWordWrap(true);
  label->setMinimumWidth(kTextWidth);
  label->setMaximumWidth(kTextWidth);
  label->setTextInteractionFlags(Qt::TextSelectableByMouse);
  return label;
}

QLabel* image(QWidget* parent) {
  auto* label = new QLabel(parent);
  label->setPixmap(icons::application().pixmap({kImageSize, kImageSize}, parent->devicePixelRatioF()));
  label->setAlignment(Qt::AlignTop);
  return label;
}

}  // namespace

AlertDialog::AlertDialog(const Texts& texts, QWidget* parent)
    : QDialog(parent), buttonCount_(static_cast<int>(texts.buttons.size())) {
  setWindowModality(Qt::WindowModal);
  setWindowTitle(QApplication::applicationDisplayName());
  setAccessibleName(displayText(texts.message));
  setAccessibleDescription(displayText(texts.information));

  auto* words = new QVBoxLayout;
  words->setSpacing(6);
  QLabel* message = textLabel(texts.message, this);
  QFont bold = message->font();
  bold.setBold(true);
  message->setFont(bold);
  words->addWidget(message);
  if (!texts.information.empty()) words->addWidget(textLabel(texts.information, this));
  words->addStretch();

  auto* buttons = new QHBoxLayout;
  buttons->setSpacing(8);
  buttons->addStretch();
  for (int i = 0; i < buttonCount_; ++i) {
    auto* button = new PushButton(displayText(texts.buttons[static_cast<std::size_t>(i)]), this);
    connect(button, &QPushButton::clicked, this, [this, i] { done(i); });
    button->setAutoDefault(true);
    if (i == 0) button->setDefault(true);
    if (i == 0) button->setFocus();
    buttons->addWidget(button);
  }

  auto* body = new QHBoxLayout;
  body->setSpacing(18);
  body->addWidget(image(this), 0, Qt::AlignTop);
  body->addLayout(words);
  auto* layout = new QVBoxLayout(this);
  layout->setContentsMargins(20, 20, 20, 16);
  layout->setSpacing(16);
  layout->addLayout(body);
  layout->addLayout(buttons);
  layout->setSizeConstraint(QLayout::SetFixedSize);
}

AlertDialog::~AlertDialog() {
  answer(qMin(1, buttonCount_ - 1));
}

void AlertDialog::ask(std::function<void(int)> answered, std::chrono::milliseconds interval) {
  answered_ = std::move(answered);
  if (interval.count() > 0) QTimer::singleShot(interval, this, [this] { done(0); });
  open();
}

void AlertDialog::done(int button) {
  QDialog::done(button);
  answer(button);
}

void AlertDialog::reject() {
  done(qMin(1, buttonCount_ - 1));
}

void AlertDialog::answer(int button) {
  if (const auto answered = std::exchange(answered_, nullptr)) answered(button);
}

}  // namespace vantory
