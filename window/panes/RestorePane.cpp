// Gives the pane its columns and commands.
#include "window/panes/RestorePane.h"

#include "backups/QWDataController.h"
#include "window/controls/Command.h"
#include "window/outline/OutlineTree.h"
#include "window/outline/QWOutlineView.h"

namespace vantory {

namespace {

std::vector<OutlineColumn> columns() {
  return {{.identifier = "name", .title = QStringLiteral("Name")},
          {.identifier = "date", .title = QStringLiteral("Date"), .width = 160},
          {.identifier = "size", .title = QStringLiteral("Size"), .width = 100, .alignment = Qt::AlignTrailing}};
}

// The group of automatic backups is always there.
QString textWithoutBackups() {
  if (QWDataController::sharedController().libraryError())
    return QStringLiteral("Your backups cannot be read. The log says why.");
  return QStringLiteral("No backups yet. Choose Backup in the toolbar to make the first one.");
}

}  // namespace

// Each line below takes its place in the menu.
RestorePane::RestorePane()
    : OutlinePane(QStringLiteral("Choose a backup to put back. The preferences that you have now are backed up first."),
                  columns(), QStringLiteral("Backups")),
      restore(addCommand(QStringLiteral("&Restore…"), QKeySequence(QStringLiteral("Ctrl+R")))),
      compare(addCommand(QStringLiteral("&Compare…"), QKeySequence(QStringLiteral("Ctrl+K")))),
      edit(addToSection(QStringLiteral("Ed&it…"), QKeySequence(QStringLiteral("Ctrl+E")))),
      toggleDefault(addCommand(QStringLiteral("Set as &Default Backup"), QKeySequence(QStringLiteral("Ctrl+D")))),
      rename(addCommand(QStringLiteral("Re&name"), QKeySequence(Qt::Key_F2))),
      remove(addCommand(QStringLiteral("Re&move…"))),
      linkProjects(addToSection(QStringLiteral("&Link Projects…"), QKeySequence(QStringLiteral("Ctrl+L")))),
      unlinkProjects(addCommand(QStringLiteral("&Unlink Projects"))),
      revealProjects(addCommand(QStringLiteral("Show Linked &Projects"))),
      updateFiles(addToSection(QStringLiteral("Update &Files"), QKeySequence(QStringLiteral("Ctrl+U")))),
      sendToMail(addCommand(QStringLiteral("Send by E-&Mail…"))),
      reveal(addCommand(QStringLiteral("&Show in File Manager"), QKeySequence(QStringLiteral("Ctrl+Shift+R")))) {
  outline().showSortIndicators();
  outline().setEmptyText(QStringLiteral("Reading the library…"), &textWithoutBackups);
  addCommandsTo(menu_);
  outline().setMenu(&menu_);
  // Only where the rows have the keyboard: everywhere else the key deletes text.
  remove.setShortcut(QKeySequence(QKeySequence::Delete));
  remove.setShortcutContext(Qt::WidgetShortcut);
  outline().tree().addAction(&remove);
  addButton(compare);
  addButton(edit);
  addButton(toggleDefault);
  addMainButton(restore);
  showSelection({});
}

// The first command of a new section of the menu.
Command& RestorePane::addToSection(const QString& title, const QKeySequence& shortcut) {
  addSeparator();
  return addCommand(title, shortcut);
}

// What needs a backup, a backup's own row, linked projects, or any row at all.
void RestorePane::showSelection(const Selection& selection) {
  for (Command* command : {&restore, &compare, &edit, &toggleDefault, &linkProjects, &updateFiles, &sendToMail})
    command->setEnabled(selection.backup);
  for (Command* command : {&rename, &remove}) command->setEnabled(selection.backupRow);
  for (Command* command : {&unlinkProjects, &revealProjects}) command->setEnabled(selection.hasProjects);
  reveal.setEnabled(selection.anyRow);
}

}  // namespace vantory
