// "--default", "--rename", "--remove", "--update" and "--prune": what the Restore pane does with backups, by command.

#include <algorithm>
#include <charconv>

#include "backups/BackupNaming.h"
#include "backups/QWDataController.h"
#include "base/Format.h"
#include "base/Paths.h"
#include "base/Spelling.h"
#include "services/TaskReport.h"
#include "services/files/QWFileManager.h"
#include "services/log/QWLog.h"
#include "services/settings/QWUserDefaults.h"
#include "services/settings/SettingsKeys.h"
#include "tasks/AppController.h"
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
  return "The default backup could not be changed: " + error.text;
}

// Why no backup, or no single one, is meant by the name.
std::string faultOf(const std::string& name, const BackupList& meant) {
  if (!meant.empty()) return formatted("%i backups are called \"%@\": give the path of one.", meant.size(), name);
  std::vector<std::string> names;
  for (const auto& backup : library().allBackups()) names.push_back(backup->name());
  const auto nearest = nearestWord(name, names);
  return nearest ? formatted("There is no backup \"%@\": did you mean \"%@\"?", name, *nearest)
                 : formatted("There is no backup \"%@\". \"vantory --list-backups\" lists them.", name);
}

// Runs `work` on the backup of the library that the first operand names, by its name or by a path; answers the exit
// code.
template <class Work>
int withBackup(const CommandContext& context, Work work) {
  if (context.operandCount() == 0) return context.refuseWithoutOperand();
  const std::string name = *context.operand(1);
  library().populateApps();
  library().populateBackups();
  BackupList meant = library().allBackups();
  const bool isPath = name.find('/') != std::string::npos;
  // A name may also be that of the backup's folder, ending and all.
  std::erase_if(meant, [&](const auto& backup) {
    return isPath ? !QWFileManager::isSameItem(backup->path(), context.pathOperand(1))
                  : backup->name() != name && paths::lastComponent(backup->path()) != name;
  });
  if (meant.size() != 1) return refuse(context, faultOf(name, meant));
  return work(meant.front());
}

}  // namespace

int defaultCommand(const CommandContext& context) {
  if (context.operand(1) == kNone) {
    const Status removed = QWUserDefaults::standardUserDefaults().removeObjectForKey(setting::kDefaultBackup);
    if (!removed) return refuse(context, unchangedDefault(removed.error()));
    QWLog::appendLog("There is no default backup any more");
    context.report.summarize("There is no default backup any more.");
    return 0;
  }
  return withBackup(context, [&](const std::shared_ptr<QWBackup>& backup) {
    if (!backup->isComplete())
      return refuse(context, formatted("\"%@\" is incomplete and cannot be the default.", backup->name()));
    const Status stored = backup->setDefault();
    if (!stored) return refuse(context, unchangedDefault(stored.error()));
    QWLog::appendLog("%@ was set as the default backup", backup->name());
    context.report.summarize(formatted("\"%@\" is the default backup.", backup->name()));
    return 0;
  });
}

// A name that no folder can bear is mended, and the person is told.
int renameCommand(const CommandContext& context) {
  if (context.operandCount() < 2) return context.refuseWithoutOperand();
  const std::string wanted = *context.operand(2);
  const std::string name = QWFileManager::validateFilename(wanted);
  if (name.empty()) return refuse(context, "A backup's name cannot be blank.");
  return withBackup(context, [&](const std::shared_ptr<QWBackup>& backup) {
    if (!backup->isAutosave() && isAutomaticName(name))
      return refuse(context, "Names that begin with \"Auto Backup \" are those of automatic backups.");
    if (name == backup->name()) return refuse(context, formatted("It is called \"%@\" already.", name));
    const auto path = QWDataController::renameBackup(*backup, name);
    context.report.add(FileAction::Move, backup->path(), path ? Status() : path.error(), {}, path ? *path : "");
    if (!path) return 0;
    const std::string kept = backupName(*path);
    if (kept != wanted) context.report.notice(formatted("\"%@\" is kept as \"%@\".", wanted, kept));
    if (backup->isDefault()) context.report.notice("It is no longer the default backup, which is known by its name.");
    context.report.summarize(formatted("\"%@\" is called \"%@\" now.", backup->name(), kept));
    return 0;
  });
}

int removeCommand(const CommandContext& context) {
  return withBackup(context, [&](const std::shared_ptr<QWBackup>& backup) {
    const auto place = library().removeBackup(backup);
    context.report.add(FileAction::Trash, backup->path(), place ? Status() : place.error(), {}, place ? *place : "");
    context.report.summarize(formatted("\"%@\" is in the Trash now.", backup->name()));
    return 0;
  });
}

int updateCommand(const CommandContext& context) {
  return withBackup(context, [&](const std::shared_ptr<QWBackup>& backup) {
    const WriteResult result = backup->writeData(context.report, true);
    if (result == WriteResult::Success && context.report.hasDone(FileAction::Copy))
      context.report.summarize(
          formatted("\"%@\" holds your present files; the earlier copies are in the Trash.", backup->name()));
    return 0;
  });
}

// Without a number the settings say how many stay.
int pruneCommand(const CommandContext& context) {
  std::optional<long long> number;
  if (const auto operand = context.operand(1)) {
    long long value = 0;
    const auto [end, failure] = std::from_chars(operand->data(), operand->data() + operand->size(), value);
    if (failure != std::errc() || end != operand->data() + operand->size() || value < 1)
      return refuse(context, "The number of automatic backups to keep must be 1 or more.");
    number = value;
  }
  library().populateApps();
  context.report.take(library().manageAutoBackups(number));
  const std::size_t removed = context.report.count(FileReport::Outcome::Done, FileAction::Remove);
  context.report.summarize(formatted("Removed %i automatic %@.", removed, removed == 1 ? "backup" : "backups"));
  return 0;
}

}  // namespace vantory
