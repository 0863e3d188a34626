// Lays the pane out.
#include "window/settings/GeneralPane.h"

#include <QCheckBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>

#include "services/settings/SettingsKeys.h"
#include "window/appearance/DisplayText.h"
#include "window/controls/BoundControls.h"
#include "window/controls/PushButton.h"

namespace vantory {

GeneralPane::GeneralPane(BoundControls& controls) : path_(new QLineEdit(this)), remark_(makeExplanation({})) {
  addRow(makePathRow());
  const QString sentence = QStringLiteral("Where your backups are kept; automatic ones in \"Autosaves\" below it.");
  addRow(makeExplanation(sentence));
  path_->setAccessibleDescription(sentence);
  QFont bold = remark_->font();
  bold.setBold(true);
  remark_->setFont(bold);
  remark_->hide();
  addRow(remark_);
  addSpace();

  auto* restore = new QCheckBox(QStringLiteral("&Restore the default backup after trashing"), this);
  add(restore, QStringLiteral("Only in the window, not for the task \"-trash\" of the command line."));
  controls.bind(setting::kAutoRestoreDefault, *restore);
  auto* administrator = new QCheckBox(QStringLiteral("As&k for an administrator's password at start"), this);
  add(administrator, QStringLiteral("For everybody who uses this machine."));
  controls.bind(setting::kRequireAdministrator, *administrator);
}

// A path counts when it has been typed to its end.
QWidget* GeneralPane::makePathRow() {
  auto* row = new QWidget(this);
  auto* label = new QLabel(QStringLiteral("Backup &folder:"), row);
  label->setBuddy(path_);
  path_->setAccessibleName(QStringLiteral("Backup folder"));
  auto* browse = new PushButton(QStringLiteral("&Browse…"), row);
  auto* layout = new QHBoxLayout(row);
  layout->setContentsMargins(0, 0, 0, 0);
  layout->addWidget(label);
  layout->addWidget(path_, 1);
  layout->addWidget(browse);
  // Somebody who looks a path up in another program has not typed it to its end.
  connect(path_, &QLineEdit::editingFinished, this, [this] {
    if (isActiveWindow()) takePath();
  });
  connect(browse, &QPushButton::clicked, this, [this] {
    if (onBrowse) onBrowse();
  });
  return row;
}

// Told again when the field loses the focus, to a question for example.
void GeneralPane::takePath() {
  if (!path_->isModified()) return;
  path_->setModified(false);
  if (onPath) onPath(path_->text().toStdString());
}

// A path that is being typed stays.
void GeneralPane::setBackupPath(const std::string& path) {
  if (path_->isModified()) return;
  path_->setText(displayText(path));
  path_->setToolTip(path_->text());
}

void GeneralPane::setBackupRemark(const std::string& text) {
  remark_->setText(displayText(text));
  remark_->setVisible(!text.empty());
}

}  // namespace vantory
