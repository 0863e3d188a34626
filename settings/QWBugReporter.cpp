#include "settings/QWBugReporter.h"

#include <exception>
#include <functional>
#include <string_view>

#include "platform/FileSystem.h"
#include "platform/SystemLog.h"
#include "services/GlobalSettings.h"
#include "services/Paths.h"
#include "services/QWException.h"
#include "services/QWFileManager.h"
#include "services/QWLocalPaths.h"
#include "services/QWLog.h"
#include "services/QWUserDefaults.h"
#include "services/Runtime.h"
#include "services/Text.h"

namespace vantory {

namespace {

Platform& platform() {
  return Runtime::current().platform();
}

// Crash reporting never stands in the program's way.
void guarded(const char* method, const std::function<void()>& work) {
  try {
    work();
  } catch (const std::exception& exception) {
    QWException::logException(exception, method);
  }
}

std::optional<Timestamp> dateIn(const PropertyListDictionary& record, std::string_view key) {
  const PropertyList* value = record.find(key);
  const Timestamp* date = value ? value->asDate() : nullptr;
  if (!date) return std::nullopt;
  return *date;
}

// Not durable: a start must not wait for the disk, and a lost date costs nothing.
void recordNow(const std::string& plistPath, const char* key) {
  const Timestamp now = platform().clock.now();
  SettingsFile(plistPath).change([&](PropertyListDictionary& record) { record.set(key, now); },
                                 SettingsFile::Durability::Passing);
}

// The last report in the folder's own order.
std::optional<std::string> lastReport(const std::string& folder, const std::string& appName) {
  const std::string prefix = lowerCased(appName + "_");
  std::optional<std::string> report;
  for (const std::string& name : QWFileManager::contentsOfDirectory(folder))
    if (lowerCased(name).starts_with(prefix)) report = paths::join(folder, name);
  return report;
}

std::optional<std::string> reportNewerThan(Timestamp launch, const std::string& appName) {
  for (const bool user : {true, false}) {
    const auto logs = QWLocalPaths::logDirectory(user);
    if (!logs) continue;
    for (const char* folder : {"CrashReporter", "DiagnosticReports"}) {
      auto report = lastReport(paths::join(*logs, folder), appName);
      if (!report) continue;
      const auto info = platform().files.info(*report, Links::Follow);
      if (info.ok() && info->modified > launch) return report;
    }
  }
  return std::nullopt;
}

}  // namespace

void QWBugReporter::startBugReporter(const std::string& appName, const std::string& plistPath) {
  guarded("startBugReporter:plistPath:", [&] {
    checkForCrashes(appName, plistPath);
    recordNow(plistPath, "launch");
  });
}

void QWBugReporter::stopBugReporter(const std::string& plistPath) {
  guarded("stopBugReporter:", [&] { recordNow(plistPath, "exit"); });
}

std::optional<std::string> QWBugReporter::checkForCrashes(const std::string& appName, const std::string& plistPath) {
  const PropertyListDictionary record = SettingsFile(plistPath).read();
  const auto launch = dateIn(record, "launch");
  const auto exit = dateIn(record, "exit");
  if (!launch || (exit && *exit >= *launch)) return std::nullopt;
  auto report = reportNewerThan(*launch, appName);
  if (!report) return std::nullopt;
  // Held: a task looks for crashes before it opens its log.
  QWLog::holdUntilNewLog("Application crashed on last launch");
  if (globalSwitch("disable-crash-reporter")) {
    platform().systemLog.write("Crash reporter disabled");
    QWLog::holdUntilNewLog("Crash reporter disabled");
  } else {
    QWLog::holdUntilNewLog(formatted("No bug reporter is installed to open the crash report %@", *report));
  }
  return report;
}

}  // namespace vantory
