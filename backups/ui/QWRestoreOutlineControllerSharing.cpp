// What the Restore pane hands to the user's other programs.

#include <chrono>

#include "backups/ui/FailureReport.h"
#include "backups/ui/QWRestoreOutlineController.h"
#include "base/Format.h"
#include "base/Paths.h"
#include "platform/Documents.h"
#include "services/QWLocalPaths.h"
#include "services/Runtime.h"
#include "services/files/QWFileManager.h"
#include "services/log/QWLog.h"
#include "services/threads/BackgroundThreads.h"

namespace vantory {

namespace {

using namespace std::chrono_literals;

Documents& documents() {
  return Runtime::current().platform().documents;
}

void reportDocuments(const Status& shown) {
  if (!shown) reportFailure("Unable to show the files", shown.error().text);
}

// Those that have gone do not keep the others from being shown.
void revealProjects(const std::vector<std::string>& projects) {
  std::vector<std::string> there;
  std::string missing;
  for (const std::string& project : projects) {
    if (QWFileManager::itemExistsAtPath(project))
      there.push_back(project);
    else
      missing += formatted(missing.empty() ? "%@" : ", %@", project);
  }
  if (!there.empty()) reportDocuments(documents().reveal(there));
  if (!missing.empty()) reportFailure("Projects are missing", missing);
}

// The archive stays where it is, because the mail program reads it when it likes; the next one takes its place.
void mail(const QWBackup& backup) {
  constexpr const char* kFailure = "Unable to email backup";
  const auto folder = QWLocalPaths::tempDirectory();
  if (!folder) return reportFailure(kFailure, "Could not compress backup file.");
  const std::string zip = paths::join(*folder, paths::lastComponent(backup.path()) + ".zip");
  if (const Status removed = QWFileManager::removeFile(zip, 10s); !removed)
    return reportFailure(kFailure,
                         formatted("The zip file of an earlier time could not be deleted: %@", removed.error().text));
  if (const Status packed = QWFileManager::compressFile(backup.path(), zip); !packed)
    return reportFailure(kFailure, formatted("Could not compress backup file.\n\n%@", packed.error().text));
  const Status sent = documents().mail(zip);
  if (!sent) reportFailure(kFailure, sent.error().text);
}

}  // namespace

void QWRestoreOutlineController::revealLinkedProjects() {
  const auto backup = selectedBackup();
  if (!backup || backup->projects().empty()) return;
  BackgroundThreads::shared().start([projects = backup->projects()] { revealProjects(projects); });
}

void QWRestoreOutlineController::reveal(const std::string& path) {
  BackgroundThreads::shared().start([path] {
    std::string shown = path;
    while (QWFileManager::isMissingAtPath(shown)) shown = paths::parent(shown);
    reportDocuments(documents().reveal({shown}));
  });
}

void QWRestoreOutlineController::sendToMail() {
  if (const auto backup = selectedBackup()) runOnThread([backup] { mail(*backup); });
}

void QWRestoreOutlineController::revealFinder() {
  QWLog::appendLog("User chose to reveal backup in Finder");
  const OutlineItemPointer row = parts_.outline.selectedItem();
  if (rowAs<QWAutosaveHeader>(row)) {
    if (const auto folder = QWDataController::autosaveLocation())
      BackgroundThreads::shared().start([path = *folder] { reportDocuments(documents().open(path)); });
  } else if (const auto backup = selectedBackup()) {
    BackgroundThreads::shared().start([path = backup->path()] { reportDocuments(documents().reveal({path})); });
  }
}

}  // namespace vantory
