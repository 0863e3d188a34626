// Gathers logs onto the desktop, and opens them.
#include "settings/QWTroubleshootingUtils.h"

#include <mutex>
#include <optional>
#include <vector>

#include "base/Paths.h"
#include "base/Timestamp.h"
#include "platform/Clock.h"
#include "platform/Documents.h"
#include "platform/FileMetadata.h"
#include "services/QWLocalPaths.h"
#include "services/Runtime.h"
#include "services/files/QWFileManager.h"
#include "services/log/LogFile.h"
#include "services/log/QWLog.h"
#include "services/messages/QWAlert.h"
#include "settings/LogGathering.h"

namespace vantory {

namespace {

Platform& platform() {
  return Runtime::current().platform();
}

// Gatherings share one folder.
struct OneAtATime {
  std::mutex mutex;
};

// An older archive stays: then the name of the new one ends with the time.
std::string archiveIn(const std::string& desktop, const std::string& name) {
  std::string archive = paths::join(desktop, name + " Logs.zip");
  if (!QWFileManager::itemExistsAtPath(archive)) return archive;
  return formatted("%@_%@.zip", paths::withoutExtension(archive),
                   localTimeText(platform().clock.now(), "%Y%m%d%H%M%S"));
}

// What a person can do about it, or else the cause.
std::string reasonForFailure(const std::string& desktop, const Error& cause) {
  if (!QWFileManager::isDirectoryAtPath(desktop)) return formatted("There is no folder %@.", desktop);
  if (!platform().metadata.isWritable(desktop)) return formatted("The folder %@ cannot be written to.", desktop);
  return cause.text;
}

bool tellFailure(const std::string& reason) {
  QWLog::appendLog("Logs could not be gathered. %@", reason);
  QWAlert::alertSheetWithMessageText("Logs could not be gathered",
                                     formatted("Please check your file permissions. %@", reason));
  return false;
}

bool tellNothingFound(bool silent) {
  QWLog::appendLog("There were no logs available to gather.");
  if (!silent) QWAlert::alertSheetWithMessageText("No logs found", "There were no logs available to gather.");
  return false;
}

bool tellSuccess(const std::string& archive, int leftOut, bool silent) {
  QWLog::appendLog("Gathered the logs in %@", archive);
  std::string text = "The gathered logs were placed on your desktop.";
  if (leftOut > 0) text += formatted(" %i of the files could not be read; the log names them.", leftOut);
  if (!silent) QWAlert::alertSheetWithMessageText("Logs gathered successfully", text);
  return true;
}

// The first of these names that is there: in the user's folder, or where the superuser's tasks keep their log.
std::optional<std::string> findLog(const std::vector<std::string>& names) {
  for (const bool user : {true, false})
    if (const auto logs = logFolder(user))
      for (const std::string& name : names)
        if (std::string path = paths::join(*logs, name); QWFileManager::fileExistsAtPath(path)) return path;
  return std::nullopt;
}

void viewLog(const std::vector<std::string>& names, const std::string& whenMissing) {
  const auto path = findLog(names);
  if (!path) return QWAlert::alertSheetWithMessageText("No log found", whenMissing);
  // Lines that still wait are to be seen too.
  QWLog::finishWriting();
  const Status opened = platform().documents.open(*path);
  if (opened) return;
  QWLog::appendLog("Unable to open %@: %@", *path, opened.error().text);
  QWAlert::alertSheetWithMessageText("The log could not be opened", formatted("It lies at %@.", *path));
}

}  // namespace

bool QWTroubleshootingUtils::gatherLogsForAppsWithNames(const std::vector<std::string>& names, bool silent,
                                                        const std::vector<std::string>& additionalFiles) {
  const std::lock_guard lock(Runtime::current().shared<OneAtATime>().mutex);
  const auto desktop = QWLocalPaths::desktopDirectory();
  const auto temporary = QWLocalPaths::tempDirectory();
  if (names.empty()) return tellNothingFound(silent);
  if (!desktop || !temporary) return tellFailure("There is no folder for them.");
  QWLog::finishWriting();
  LogGathering gathering(paths::join(*temporary, "QW_App_Logs"));
  if (const Status begun = gathering.begin(); !begun) return tellFailure(begun.error().text);
  for (const std::string& name : names) gathering.addProgram(name);
  for (const std::string& path : additionalFiles) gathering.addFile(path);
  if (gathering.isEmpty()) return tellNothingFound(silent);
  const std::string archive = archiveIn(*desktop, names.front());
  if (gathering.copied() == 0) return tellFailure("None of the files could be read; the log names them.");
  if (const Status packed = gathering.packInto(archive); !packed)
    return tellFailure(reasonForFailure(*desktop, packed.error()));
  return tellSuccess(archive, gathering.failed(), silent);
}

bool QWTroubleshootingUtils::gatherLogsForAppsWithNames(const std::vector<std::string>& names, bool silent) {
  return gatherLogsForAppsWithNames(names, silent, {});
}

bool QWTroubleshootingUtils::gatherLogsForAppsWithNames(const std::vector<std::string>& names) {
  return gatherLogsForAppsWithNames(names, false);
}

bool QWTroubleshootingUtils::gatherLogsForAppWithName(const std::string& name) {
  return gatherLogsForAppsWithNames({name});
}

void QWTroubleshootingUtils::viewLogForApp(const std::string& name) {
  viewLog({logFileName(name)}, "You must perform a task before viewing the log.");
}

void QWTroubleshootingUtils::viewTaskLogForApp(const std::string& name) {
  viewLog({name + ".1.task.log", logFileName(name + ".task")},
          "You must run the application as a task (e.g. through Jobwheel) before viewing a log.");
}

}  // namespace vantory
