// "--verify": whether backups are what they were when they were made.

#include <ostream>

#include "backups/BackupCheck.h"
#include "backups/BackupNaming.h"
#include "base/Format.h"
#include "base/Json.h"
#include "base/Paths.h"
#include "base/Text.h"
#include "base/TextTable.h"
#include "platform/SystemInfo.h"
#include "services/Runtime.h"
#include "services/files/QWFileManager.h"
#include "tasks/DryRun.h"
#include "tasks/NamedBackup.h"
#include "tasks/Question.h"
#include "tasks/Refusal.h"

namespace vantory {

namespace {

struct Verified {
  std::string name;
  std::string path;
  BackupCheck check;
};

PropertyListArray entriesFor(const std::vector<BackupFault>& faults) {
  PropertyListArray entries;
  for (const BackupFault& fault : faults) {
    PropertyListDictionary entry;
    entry.append("kind", nameOf(fault.kind));
    if (!fault.path.empty()) entry.append("path", fault.path);
    entry.append("text", fault.text);
    entries.push_back(std::move(entry));
  }
  return entries;
}

PropertyListDictionary entryFor(const Verified& backup) {
  PropertyListDictionary entry;
  entry.append("name", backup.name);
  entry.append("path", backup.path);
  entry.append("sound", backup.check.isSound());
  entry.append("files", static_cast<std::int64_t>(backup.check.files));
  entry.append("bytes", backup.check.bytes);
  entry.append("withoutChecksum", static_cast<std::int64_t>(backup.check.withoutChecksum));
  entry.append("pathsKnown", backup.check.isHeldKnown);
  entry.append("faults", entriesFor(backup.check.faults));
  entry.append("remarks", entriesFor(backup.check.remarks));
  return entry;
}

std::string json(const std::vector<Verified>& backups, bool isSound) {
  PropertyListArray entries;
  for (const Verified& backup : backups) entries.push_back(entryFor(backup));
  PropertyListDictionary answer;
  answer.append("sound", isSound);
  answer.append("backups", std::move(entries));
  return writeJson(std::move(answer)) + "\n";
}

// What has no checksum is as good as it can be told to be.
std::string verdictOn(const BackupCheck& check) {
  if (!check.isSound()) return counted(check.faults.size(), "fault");
  if (check.files > 0 && check.withoutChecksum == check.files) return "sound, no checksum";
  if (check.withoutChecksum > 0) return formatted("sound, %i without checksum", check.withoutChecksum);
  return check.isHeldKnown ? "sound" : "sound, list of files not known";
}

std::string table(const std::vector<Verified>& backups) {
  if (backups.empty()) return "There is no backup to verify.\n";
  TextTable table({"NAME", "FILES", "SIZE", "RESULT", "PATH AND FAULTS"});
  for (const Verified& backup : backups) {
    table.add({backup.name, std::to_string(backup.check.files),
               QWFileManager::formatFileSize(static_cast<double>(backup.check.bytes)), verdictOn(backup.check),
               backup.path});
    for (const auto* told : {&backup.check.faults, &backup.check.remarks})
      for (const BackupFault& fault : *told)
        table.add({"", "", "", "", fault.path.empty() ? fault.text : fault.path + " " + fault.text});
  }
  return table.text();
}

// Such as "1 of 3 backups is damaged: Clean setup."; empty where all are sound.
std::string sentenceOn(const std::vector<Verified>& backups) {
  std::string names;
  std::size_t damaged = 0;
  for (const Verified& backup : backups) {
    if (backup.check.isSound()) continue;
    names += (damaged++ == 0 ? "" : ", ") + backup.name;
  }
  if (damaged == 0) return "";
  return formatted("%i of %@ %@ damaged: %@.", damaged, counted(backups.size(), "backup"), damaged == 1 ? "is" : "are",
                   names);
}

// Any other folder might be the whole disk.
bool isFolderOfBackup(const std::string& path) {
  return QWFileManager::isDirectoryAtPath(path) &&
         (isBackupName(path) || QWFileManager::itemExistsAtPath(paths::join(path, kBackupSettingsFile)));
}

// Those of the library that bear a name, or the folder at a path; with no names all of the library.
Result<BackupList> backupsToVerify(const std::vector<std::string>& names) {
  if (names.empty()) return sortedBackups();
  BackupList backups;
  for (const std::string& name : names) {
    const std::string path = paths::absolute(name, Runtime::current().platform().system.workingDirectory());
    BackupList meant = backupsMeant(name, path);
    if (meant.empty() && !name.empty() && isFolderOfBackup(path)) meant.push_back(QWBackup::backupWithFile(path));
    if (meant.empty()) return Error{std::errc::no_such_file_or_directory, faultOfName(name, {})};
    backups.insert(backups.end(), meant.begin(), meant.end());
  }
  return backups;
}

}  // namespace

int verifyBackups(const QuestionContext& context) {
  DryRun run({"vantory"}, context.errors);
  if (const Status begun = run.begin(true); !begun) return refuseToldQuestion(begun.error().text, context);
  QWDataController& library = QWDataController::sharedController();
  library.populateApps();
  library.populateBackups();
  const auto meant = backupsToVerify(context.operands);
  if (!meant) return refuseQuestion(meant.error().text, context);
  std::vector<Verified> verified;
  // What cannot be listed cannot be verified either.
  bool isSound = !context.operands.empty() || !library.libraryError();
  for (const auto& backup : *meant) {
    verified.push_back({backup->name(), run.placeOnDisk(backup->path()), checkBackup(*backup)});
    isSound = isSound && verified.back().check.isSound();
  }
  context.output << (context.form == AnswerForm::Json ? json(verified, isSound) : table(verified));
  const std::string sentence = sentenceOn(verified);
  if (!isSound && context.found) context.found(sentence.empty() ? library.libraryError()->text : sentence);
  return isSound ? 0 : 1;
}

}  // namespace vantory
