// Lays out a message with its buttons.
#include "window/dialogs/AlertDialog.h"

#include <QApplication>
#include <QHBoxLayout>
#include <QLabel>
#include <QMimeData>
#include <QTextDocument>
#include <QTextEdit>
#include <QTimer>
#include <QVBoxLayout>
#include <QWindow>
#include <QtMath>
#include <algorithm>
#include <utility>

#include "base/Text.h"
#include "window/appearance/DisplayText.h"
#include "window/appearance/Icons.h"
#include "window/controls/Mnemonics.h"
#include "window/controls/PushButton.h"
#include "window/dialogs/ResultList.h"

namespace vantory {

namespace {

constexpr int kImageSize = 56;
constexpr int kTextWidth = 360;
constexpr int kTextWidthOverList = 600;
constexpr int kLinesBelowList = 3;

// The toolkit would copy a blank that ends no line as an ordinary one.
class Words : public QTextEdit {
 public:
  using QTextEdit::QTextEdit;

 protected:
  QMimeData* createMimeDataFromSelection() const override {
    auto* data = new QMimeData;
    data->setText(textCursor().selectedText().replace(QChar::ParagraphSeparator, QLatin1Char('\n')));
    return data;
  }
};

// Line by line, because displayText() would show the breaks between lines as escapes.
QString paragraphs(const std::string& text) {
  QStringList lines;
  for (const std::string& line : split(text, '\n')) lines.append(displayText(line));
  return lines.join(QLatin1Char('\n'));
}

// No label: a long name ends a line where it must, and is copied as it is.
QTextEdit* wordsOf(const std::string& text, const QFont& font, int width, QWidget* parent) {
  auto* words = new Words(parent);
  auto* document = new QTextDocument(paragraphs(text), words);
  document->setDefaultFont(font);
  document->setDocumentMargin(0);
  QTextOption wrapping;
  wrapping.setWrapMode(QTextOption::WrapAtWordBoundaryOrAnywhere);
  document->setDefaultTextOption(wrapping);
  document->setTextWidth(width);
  words->setFixedSize(width, qCeil(document->size().height()));
  words->setFont(font);
  words->setDocument(document);
  words->setReadOnly(true);
  words->setTextInteractionFlags(Qt::TextSelectableByMouse);
  words->setFocusPolicy(Qt::ClickFocus);
  words->setFrameShape(QFrame::NoFrame);
  words->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
  words->setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
  words->viewport()->setAutoFillBackground(false);
  words->setAccessibleName(words->toPlainText());
  return words;
}

// The window in front of those that cover the parent; null when none does. A window manager may give the keyboard only
// to what lies over the window that has it.
QWidget* sheetOver(const QWidget* parent) {
  QWidget* const front = QApplication::activeModalWidget();
  for (const QWidget* each = front; each; each = each->parentWidget())
    if (each == parent) return front;
  return nullptr;
}

// A window manager that sees the alert go may give the keyboard to the window below that again.
void giveKeyboardBack(QWidget* window) {
  constexpr std::chrono::seconds kForItsChoice{1};
  auto* watch = new QObject(window);
  QObject::connect(qApp, &QApplication::focusWindowChanged, watch, [window](const QWindow* chosen) {
    const QWidget* const parent = window->parentWidget();
    if (parent && chosen == parent->windowHandle() && chosen && window->isVisible()) window->activateWindow();
  });
  QTimer::singleShot(kForItsChoice, watch, &QObject::deleteLater);
  window->activateWindow();
}

// The buttons of a list have their own letters.
QStringList titlesOf(const AlertDialog::Texts& texts) {
  QStringList titles;
  for (const std::string& title : texts.buttons) titles << displayText(title);
  return withMnemonics(titles, texts.rows.empty() ? QString() : QStringLiteral("vl"));
}

QLabel* image(QWidget* parent) {
  auto* label = new QLabel(parent);
  label->setPixmap(icons::application().pixmap({kImageSize, kImageSize}, parent->devicePixelRatioF()));
  label->setAlignment(Qt::AlignTop);
  return label;
}

}  // namespace

AlertDialog::AlertDialog(const Texts& texts, QWidget* parent, const Shows& shows)
    : QDialog(parent), below_(parent), dismissal_(texts.isDismissedByDefault || texts.buttons.size() < 2 ? 0 : 1) {
  setWindowModality(Qt::WindowModal);
  setWindowTitle(QApplication::applicationDisplayName());
  setAccessibleName(paragraphs(texts.message));
  setAccessibleDescription(paragraphs(texts.information));

  auto* words = new QVBoxLayout;
  words->setSpacing(6);
  QFont bold = font();
  bold.setBold(true);
  const int width = texts.rows.empty() ? kTextWidth : kTextWidthOverList;
  words->addWidget(wordsOf(texts.message, bold, width, this));
  if (!texts.information.empty()) words->addWidget(wordsOf(texts.information, font(), width, this));
  words->addStretch();

  auto* buttons = new QHBoxLayout;
  buttons->setSpacing(8);
  auto* list = texts.rows.empty() ? nullptr : new ResultList(texts.rows, this);
  if (list) addListButtons(*buttons, *list, shows);
  buttons->addStretch();
  const QStringList titles = titlesOf(texts);
  for (int i = 0; i < titles.size(); ++i) {
    auto* button = new PushButton(titles[i], this);
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
  if (list) {
    layout->addWidget(list, 1);
    layout->addWidget(wordsBelow(*list));
  }
  layout->addLayout(buttons);
  // Long paths may want more room.
  layout->setSizeConstraint(list ? QLayout::SetMinimumSize : QLayout::SetFixedSize);
}

// A column is too narrow for a long path or cause.
QLabel* AlertDialog::wordsBelow(ResultList& list) {
  auto* words = new QLabel(this);
  words->setWordWrap(true);
  words->setTextFormat(Qt::PlainText);
  words->setTextInteractionFlags(Qt::TextSelectableByMouse);
  words->setMinimumHeight(kLinesBelowList * fontMetrics().lineSpacing());
  words->setAlignment(Qt::AlignTop | Qt::AlignLeading);
  const auto follow = [words, &list] { words->setText(list.selectedInWords()); };
  follow();
  connect(&list, &ResultList::itemSelectionChanged, words, follow);
  return words;
}

// They leave the alert open.
void AlertDialog::addListButtons(QHBoxLayout& buttons, ResultList& list, const Shows& shows) {
  auto* reveal = new PushButton(QStringLiteral("Re&veal"), this);
  auto* log = new PushButton(QStringLiteral("View &Log"), this);
  reveal->setToolTip(QStringLiteral("Show the selected file in the file manager"));
  const auto follow = [&list, reveal] { reveal->setEnabled(!list.selectedPath().empty()); };
  follow();
  connect(&list, &ResultList::itemSelectionChanged, reveal, follow);
  connect(reveal, &QPushButton::clicked, this, [&list, show = shows.reveal] {
    if (show) show(list.selectedPath());
  });
  connect(log, &QPushButton::clicked, this, [show = shows.log] {
    if (show) show();
  });
  for (QPushButton* button : {reveal, log}) {
    button->setAutoDefault(false);
    buttons.addWidget(button);
  }
}

// Whoever waits for the answer gets one, also when the window takes the dialog with it.
AlertDialog::~AlertDialog() {
  answer(dismissal_);
}

void AlertDialog::ask(std::function<void(int)> answered, std::chrono::milliseconds interval) {
  answered_ = std::move(answered);
  if (interval.count() > 0) QTimer::singleShot(interval, this, [this] { done(0); });
  if (QWidget* covering = sheetOver(parentWidget())) {
    below_ = covering;
    create();
    windowHandle()->setTransientParent(covering->windowHandle());
  }
  open();
}

// The keyboard is given back only by an alert that had it.
void AlertDialog::done(int button) {
  const bool leadsBack = below_ && isActiveWindow();
  QDialog::done(button);
  if (leadsBack) giveKeyboardBack(below_);
  answer(button);
}

void AlertDialog::reject() {
  done(dismissal_);
}

// Once: closing and destroying both come here.
void AlertDialog::answer(int button) {
  if (const auto answered = std::exchange(answered_, nullptr)) answered(button);
}

}  // namespace vantory
