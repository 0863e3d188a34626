// "--default", "--rename", "--remove", "--update" and "--prune": what the Restore pane does with backups, by command.

#include <algorithm>
#include <charconv>

#include "backups/BackupNaming.h"
#include "backups/DefaultBackup.h"
#include "backups/LibraryFolder.h"
#include "backups/QWDataController.h"
#include "base/Format.h"
#include "base/Paths.h"
#include "services/TaskReport.h"
#include "services/files/QWFileManager.h"
#include "services/log/QWLog.h"
#include "services/settings/QWUserDefaults.h"
#include "services/settings/SettingsKeys.h"
#include "tasks/AppController.h"
#include "tasks/NamedBackup.h"
#include "tasks/TaskAccount.h"
#include "tasks/TaskCommand.h"

namespace vantory {

namespace {

constexpr std::string_view kNone = "none";

QWDataController& library() {
  return QWDataController::sharedController();
}

int refuse(const CommandContext& context, const std::string& reason) {
  return context.refuse({.text = "Vantory: " + reason, .title = "Vantory", .description = reason, .console = reason});
}

std::string unchangedDefault(const Error& error) {
  const std::string sentence = "The default backup could not be changed: " + error.text;
  return error.cure.empty() ? sentence : sentence + ". " + error.cure;
}

// These commands have no older callers: what they do not understand keeps them from being begun. None where all is
// well.
std::optional<int> refuseOperands(const CommandContext& context, std::size_t least) {
  const std::string& option = context.arguments[context.position];
  const std::size_t most = std::ranges::find(commandTable(), option, &TaskCommand::option)->mostOperands;
  const std::size_t count = context.ownOperandCount();
  if (count < least) return context.refuseWithoutOperand();
  if (count <= most) return std::nullopt;
  return refuse(
      context, formatted("\"%@\" is one operand too many. Names with blanks need quotes.", *context.operand(most + 1)));
}

void noteSettings(const CommandContext& context) {
  if (const auto path = QWUserDefaults::settingsPath(true)) context.report.done(FileAction::Write, *path);
}

// Runs `work` on the one backup of the library that the first operand names; answers the exit code.
template <class Work>
int withBackup(const CommandContext& context, Work work) {
  const std::string name = *context.operand(1);
  library().populateApps();
  library().populateBackups();
  const BackupList meant = backupsMeant(name, context.pathOperand(1));
  if (meant.size() != 1) return refuse(context, faultOfName(name, meant));
  return work(meant.front());
}

// The default is known by its folder's name.
bool isNameShared(const QWBackup& backup) {
  const BackupList all = library().allBackups();
  return std::ranges::count_if(all, [&](const auto& other) {
           return paths::lastComponent(other->path()) == paths::lastComponent(backup.path());
         }) > 1;
}

}  // namespace

int defaultCommand(const CommandContext& context) {
  if (const auto refused = refuseOperands(context, 1)) return *refused;
  if (context.operand(1) == kNone) {
    if (!QWBackup::defaultBackupName()) {
      context.report.summarize("There was no default backup.");
      return 0;
    }
    const Status removed = setPlaceOfDefault(libraryFolder().value_or(""), context.report);
    if (!removed) return refuse(context, unchangedDefault(removed.error()));
    QWLog::appendLog("There is no default backup any more");
    noteSettings(context);
    context.report.summarize("There is no default backup any more.");
    return 0;
  }
  return withBackup(context, [&](const std::shared_ptr<QWBackup>& backup) {
    if (!backup->isComplete()) return refuse(context, backup->flawInWords() + ". It cannot be the default.");
    if (isNameShared(*backup))
      return refuse(context, "Another backup's folder has the same name, by which the default is known: rename one.");
    const Status stored = setPlaceOfDefault(backup->path(), context.report);
    if (!stored) return refuse(context, unchangedDefault(stored.error()));
    QWLog::appendLog("%@ was set as the default backup", backup->name());
    noteSettings(context);
    context.report.summarize(formatted("\"%@\" is the default backup.", backup->name()));
    return 0;
  });
}

// A name that no folder can bear is mended, and the person is told.
int renameCommand(const CommandContext& context) {
  if (const auto refused = refuseOperands(context, 2)) return *refused;
  const std::string wanted = *context.operand(2);
  const std::string name = QWFileManager::validateFilename(wanted);
  if (isOfDotsOnly(name)) return refuse(context, "A backup's name cannot be blank, or of dots only.");
  if (name == kNone) return refuse(context, "\"none\" means no backup to \"--default\". Please choose another name.");
  return withBackup(context, [&](const std::shared_ptr<QWBackup>& backup) {
    if (!backup->isAutosave() && isAutomaticName(name))
      return refuse(context, "Names that begin with \"Auto Backup \" are those of automatic backups.");
    if (name == backup->name()) return refuse(context, formatted("It is called \"%@\" already.", name));
    const auto path = QWDataController::renameBackup(*backup, name, context.report);
    if (!path) return 0;
    const std::string kept = backupName(*path);
    noteKeptName(wanted, kept, context.report);
    if (backup->isDefault())
      context.report.notice(
          formatted("It is no longer the default backup, which is known by its name. To make it that "
                    "again: vantory --default \"%@\"",
                    kept));
    context.report.summarize(formatted("\"%@\" is called \"%@\" now.", backup->name(), kept));
    return 0;
  });
}

int removeCommand(const CommandContext& context) {
  if (const auto refused = refuseOperands(context, 1)) return *refused;
  return withBackup(context, [&](const std::shared_ptr<QWBackup>& backup) {
    const bool wasDefault = backup->isDefault();
    if (library().removeBackup(backup, context.report) && wasDefault)
      context.report.notice("There is no default backup any more.");
    context.report.summarize(formatted("\"%@\" is in the Trash now.", backup->name()));
    return 0;
  });
}

int updateCommand(const CommandContext& context) {
  if (const auto refused = refuseOperands(context, 1)) return *refused;
  return withBackup(context, [&](const std::shared_ptr<QWBackup>& backup) {
    if (!backup->isComplete()) return refuse(context, backup->flawInWords() + ". It cannot be updated.");
    const WriteResult result = backup->writeData(context.report, true);
    const std::size_t copied = context.report.count(FileReport::Outcome::Done, FileAction::Copy);
    if (result == WriteResult::Success && copied == 0 && context.report.isWhole())
      context.report.notice(QWBackup::kNothingToUpdate);
    const char* earlier = context.report.hasDone(FileAction::Trash) ? " The earlier copies are in the Trash." : "";
    context.report.summarize(formatted("Put %@ into \"%@\".%@", counted(copied, "file"), backup->name(), earlier));
    return 0;
  });
}

// Without a number the settings say how many stay.
int pruneCommand(const CommandContext& context) {
  if (const auto refused = refuseOperands(context, 0)) return *refused;
  std::optional<long long> number;
  if (const auto operand = context.ownOperandCount() > 0 ? context.operand(1) : std::nullopt) {
    long long value = 0;
    const auto [end, failure] = std::from_chars(operand->data(), operand->data() + operand->size(), value);
    if (failure != std::errc() || end != operand->data() + operand->size() || value < 1)
      return refuse(context, "The number of automatic backups to keep must be 1 or more.");
    number = value;
  }
  QWUserDefaults& settings = QWUserDefaults::standardUserDefaults();
  settings.registerDefaults({{setting::kMaxAutoBackups, setting::kUsualMaxAutoBackups}});
  if (!number && settings.areKnown() && settings.integerForKey(setting::kMaxAutoBackups) < 1)
    return refuse(context, "The settings say that no automatic backup is to stay. Say how many: \"--prune N\".");
  library().populateApps();
  context.report.take(library().manageAutoBackups(number));
  const std::size_t removed = context.report.count(FileReport::Outcome::Done, FileAction::Remove);
  context.report.summarize(removed == 0 ? "There was nothing to remove."
                                        : formatted("Removed %@.", counted(removed, "automatic backup")));
  return 0;
}

}  // namespace vantory
