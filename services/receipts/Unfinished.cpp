// Finds the hidden names by a receipt.
#include "services/receipts/Unfinished.h"

#include <algorithm>
#include <chrono>

#include "base/Paths.h"
#include "platform/FileSystem.h"
#include "platform/StagingName.h"
#include "services/QWLocalPaths.h"
#include "services/Runtime.h"
#include "services/files/QWFileManager.h"
#include "services/log/QWLog.h"
#include "services/receipts/Receipt.h"

namespace vantory {

namespace {

using namespace std::chrono_literals;

bool putsSomething(FileAction action) {
  return action == FileAction::Replace || action == FileAction::Restore || action == FileAction::PutBack;
}

}  // namespace

void removeUnfinished(const Receipt& receipt, const std::vector<std::string>& roots) {
  for (const ReceiptStep& step : receipt.steps) {
    if (!putsSomething(step.action)) continue;
    const std::string left = paths::join(paths::parent(step.path), stagingName(paths::lastComponent(step.path)));
    const auto isBelow = [&](const std::string& root) { return QWFileManager::isWithin(left, root); };
    if (QWFileManager::isMissingAtPath(left) || std::ranges::none_of(roots, isBelow)) continue;
    const auto held = Runtime::current().platform().files.holdFolder(left, 0ms);
    if (!held) continue;
    QWLog::appendLog("Removing %@, which a task that was killed has left", left);
    (void)QWFileManager::removeFile(left, false);
  }
}

void removeUnfinishedOfNewest() {
  const auto receipt = newestIfKilled();
  if (!receipt) return;
  std::vector<std::string> roots;
  for (const auto& root : {QWLocalPaths::userDirectory(), QWLocalPaths::sharedUsersDirectory()})
    if (root) roots.push_back(*root);
  removeUnfinished(*receipt, roots);
}

}  // namespace vantory
