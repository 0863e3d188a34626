// Goes by application, and makes durable what was restored.
#include "backups/RestoreRun.h"

#include <algorithm>
#include <optional>
#include <string>
#include <vector>

#include "base/Format.h"
#include "base/Text.h"
#include "catalog/QWApp.h"
#include "platform/FileSystem.h"
#include "services/QWLocalPaths.h"
#include "services/Runtime.h"
#include "services/TaskReport.h"
#include "services/files/QWFileManager.h"
#include "services/log/QWLog.h"

namespace vantory {

namespace {

// Returns when what was written to the folder's file system is on disk.
void syncFolder(const std::optional<std::string>& folder, TaskReport& report) {
  if (!folder || QWFileManager::isMissingAtPath(*folder)) return;
  const Status synced = Runtime::current().platform().files.sync(*folder);
  if (synced) return;
  QWLog::appendLog("The restored files may not be on disk: %@", synced.error().text);
  report.failed(FileAction::Sync, *folder, synced.error());
}

// A person who trusts a backup should know what that decides; empty where it decides nothing.
std::string remarkOnPlaces(const QWApp& app) {
  constexpr std::size_t kMost = 5;
  std::vector<std::string> places;
  for (const auto& item : app.children())
    if (item->placeRule() && item->selected() != Off)
      for (const std::string& pattern : item->files()) places.push_back(pattern);
  if (places.empty()) return "";
  const std::size_t more = places.size() - std::min(places.size(), kMost);
  places.resize(places.size() - more);
  std::string named = joined(places, ", ");
  if (more > 0) named += formatted(" and %i more", more);
  return formatted("The backup itself says where the files of %@ belong: %@. No catalog file here says so.", app.name(),
                   named);
}

}  // namespace

bool RestoreRun::restore(const QWApp& app, const std::function<void()>& restoreFiles) {
  switch (applications_.makeWay(app, closeAutomatically_)) {
    case ClosedApplications::Answer::Cancel:
      QWLog::appendLog("User cancelled restore");
      cancelled_ = true;
      return false;
    case ClosedApplications::Answer::Proceed:
      restoredAny_ = true;
      if (std::string remark = remarkOnPlaces(app); !remark.empty()) report_.remark(std::move(remark));
      restoredAvidUsers_ |= std::ranges::any_of(
          app.children(), [](const auto& item) { return item->selected() != Off && !item->users().empty(); });
      restoreFiles();
      break;
    case ClosedApplications::Answer::PassOver:
      break;
  }
  return true;
}

// One wait for each place that was written to, instead of one for each file.
void RestoreRun::makeDurable() const {
  if (restoredAny_) syncFolder(QWLocalPaths::userDirectory(), report_);
  if (restoredAvidUsers_) syncFolder(QWLocalPaths::sharedUsersDirectory(), report_);
}

void RestoreRun::finish() {
  makeDurable();
  if (cancelled_ || applications_.empty()) return;
  QWLog::appendLog("Relaunching applications...");
  applications_.relaunch();
}

}  // namespace vantory
