// Lays the dialog out.
#include "window/dialogs/AboutDialog.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QVBoxLayout>

#include "window/appearance/Icons.h"
#include "window/controls/PushButton.h"

namespace vantory {

namespace {

constexpr int kImageSize = 64;
constexpr int kWidth = 380;

QLabel* sentence(const QString& text, QWidget* parent) {
  auto* label = new QLabel(text, parent);
  label->setWordWrap(true);
  label->setFixedWidth(kWidth);
  label->setTextInteractionFlags(Qt::TextBrowserInteraction);
  return label;
}

}  // namespace

AboutDialog::AboutDialog(const QString& home, const std::function<void()>& openHome, QWidget* parent)
    : QDialog(parent) {
  setWindowModality(Qt::WindowModal);
  setWindowTitle(QStringLiteral("About"));
  auto* image = new QLabel(this);
  image->setPixmap(icons::application().pixmap({kImageSize, kImageSize}, devicePixelRatioF()));
  auto* name = sentence(QStringLiteral("Vantory " VANTORY_VERSION), this);
  QFont large = name->font();
  large.setBold(true);
  large.setPointSizeF(large.pointSizeF() * 1.3);
  name->setFont(large);
  auto* purpose = sentence(QStringLiteral("Looks after the preferences of your editing applications: moves them to the "
                                          "Trash, backs them up, restores them and locks them."),
                           this);
  auto* licence = sentence(QStringLiteral("Free software under the MIT licence. © 2026 The Vantory authors."), this);
  auto* toolkit =
      sentence(QStringLiteral("The window uses Qt %1, under the LGPL.").arg(QLatin1String(qVersion())), this);
  auto* link = sentence(QStringLiteral("<a href=\"%1\">%1</a>").arg(home), this);
  link->setAccessibleName(QStringLiteral("Vantory home page"));
  connect(link, &QLabel::linkActivated, this, openHome);

  auto* words = new QVBoxLayout;
  words->setSpacing(10);
  for (QLabel* each : {name, purpose, licence, toolkit, link}) words->addWidget(each);
  auto* body = new QHBoxLayout;
  body->setSpacing(18);
  body->addWidget(image, 0, Qt::AlignTop);
  body->addLayout(words);
  auto* ok = new PushButton(QStringLiteral("OK"), this);
  ok->setDefault(true);
  ok->setFocus();
  connect(ok, &QPushButton::clicked, this, &QDialog::accept);
  auto* layout = new QVBoxLayout(this);
  layout->setContentsMargins(20, 20, 20, 16);
  layout->setSpacing(16);
  layout->addLayout(body);
  layout->addWidget(ok, 0, Qt::AlignTrailing);
  layout->setSizeConstraint(QLayout::SetFixedSize);
}

}  // namespace vantory
