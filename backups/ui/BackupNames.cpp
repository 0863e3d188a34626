// Tells backups apart, and refuses names that mislead.
#include "backups/ui/BackupNames.h"

#include "backups/BackupNaming.h"
#include "backups/QWBackup.h"
#include "base/Format.h"
#include "base/Text.h"
#include "services/log/QWLog.h"

namespace vantory {

bool refuseNameOfAutomaticBackups(const std::string& name, AlertParent parentWindow) {
  if (!isAutomaticName(name)) return false;
  QWLog::appendLog("The name %@ was refused: it is one of automatic backups", name);
  QWAlert::alertSheetWithMessageText("Please choose another name for this backup",
                                     "Names that begin with \"Auto Backup \" are those of automatic backups.",
                                     parentWindow);
  return true;
}

std::string keptNameInWords(const std::string& wanted, const std::string& kept) {
  return formatted("\"%@\" is kept as \"%@\".", wanted, kept);
}

std::string nameAndDate(const QWBackup& backup) {
  const std::string name = "\"" + backup.name() + "\"";
  return backup.date() ? name + " of " + localTimeText(*backup.date(), "%Y-%m-%d %H:%M:%S") : name;
}

std::string unknownInWords(const QWBackup& backup) {
  std::vector<std::string> names;
  for (const UnknownPart& part : backup.unknown()) names.push_back(part.name);
  return formatted("It also holds files of what is not known here: %@.", joined(names, ", "));
}

std::string warningOf(const QWBackup& backup) {
  if (backup.isComplete())
    return backup.unknown().empty() ? "" : "\n\n" + unknownInWords(backup) + " They stay in the backup.";
  const std::string cause = backup.readError() ? "" : ": it was not written to its end, or its settings are damaged";
  return "\n\n" + backup.flawInWords() + cause + ". Nothing can be restored from it as it is.";
}

}  // namespace vantory
