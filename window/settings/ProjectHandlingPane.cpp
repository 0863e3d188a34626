// Lays the pane out, and shows the handlers' state.
#include "window/settings/ProjectHandlingPane.h"

#include <QCheckBox>
#include <QEvent>
#include <QHBoxLayout>
#include <QLabel>

#include "services/settings/SettingsKeys.h"
#include "window/appearance/DisplayText.h"
#include "window/controls/BoundControls.h"
#include "window/controls/PushButton.h"

namespace vantory {

namespace {

// On a dark ground the same colours, lighter.
QColor inkFor(HandlerStatus::Colour colour, const QPalette& palette) {
  const bool dark = palette.color(QPalette::Window).lightness() < 128;
  if (colour == HandlerStatus::Colour::Red) return dark ? QColor(0xff, 0x7b, 0x72) : QColor(0xcc, 0x00, 0x00);
  return dark ? QColor(0x5f, 0xd0, 0x68) : QColor::fromRgbF(0.000068F, 0.455F, 0.00514F);
}

}  // namespace

ProjectHandlingPane::ProjectHandlingPane(BoundControls& controls)
    : status_(new QLabel(this)),
      note_(makeExplanation({})),
      keystroke_(new QCheckBox(QStringLiteral("Show the &system settings of Final Cut Pro with each project"), this)) {
  QFont bold = status_->font();
  bold.setBold(true);
  status_->setFont(bold);
  addRow(status_);
  addRow(note_);
  addRow(makeExplanation(
      QStringLiteral("As the default handler, Vantory is what opens the projects of Final Cut Studio: it restores the "
                     "backup that is linked to a project, then opens the project in its application.")));
  addSpace();
  addRow(makeButtons());
  addSpace();
  add(keystroke_, QStringLiteral("Only where no backup is linked to the project, and only on a Mac."));
  controls.bind(setting::kShowSystemSettings, *keystroke_);
}

QWidget* ProjectHandlingPane::makeButtons() {
  auto* row = new QWidget(this);
  auto* vantory = new PushButton(QStringLiteral("Open Projects with &Vantory"), row);
  auto* studio = new PushButton(QStringLiteral("Open Projects with Final Cut St&udio"), row);
  connect(vantory, &QPushButton::clicked, this, [this] {
    if (onVantory) onVantory();
  });
  connect(studio, &QPushButton::clicked, this, [this] {
    if (onFinalCutStudio) onFinalCutStudio();
  });
  auto* layout = new QHBoxLayout(row);
  layout->setContentsMargins(0, 0, 0, 0);
  layout->addWidget(vantory);
  layout->addWidget(studio);
  layout->addStretch();
  return row;
}

void ProjectHandlingPane::setStatus(const HandlerStatus& status) {
  status_->setText(displayText(status.text));
  note_->setText(displayText(status.note));
  note_->setVisible(!status.note.empty());
  keystroke_->setEnabled(status.keystrokeEnabled);
  colour_ = status.colour;
  colourStatus();
}

// Setting a palette tells of a changed palette: the same ink again would never end.
void ProjectHandlingPane::colourStatus() {
  const QColor ink = inkFor(colour_, palette());
  if (status_->palette().color(QPalette::WindowText) == ink) return;
  QPalette coloured;
  coloured.setColor(QPalette::WindowText, ink);
  status_->setPalette(coloured);
}

// The desktop may turn dark while the pane is shown.
void ProjectHandlingPane::changeEvent(QEvent* event) {
  FormPane::changeEvent(event);
  if (event->type() == QEvent::PaletteChange) colourStatus();
}

}  // namespace vantory
