// Compares the dates of the last start, the last end and the newest crash report.
#include "settings/QWBugReporter.h"

#include <algorithm>
#include <exception>
#include <functional>
#include <string_view>
#include <vector>

#include "base/Paths.h"
#include "base/Text.h"
#include "platform/CrashReports.h"
#include "platform/FileSystem.h"
#include "platform/SystemLog.h"
#include "platform/Workspace.h"
#include "services/GlobalSettings.h"
#include "services/QWLocalPaths.h"
#include "services/Runtime.h"
#include "services/files/QWFileManager.h"
#include "services/log/QWException.h"
#include "services/log/QWLog.h"
#include "services/messages/QWAlert.h"
#include "services/settings/QWUserDefaults.h"
#include "services/threads/MainThread.h"

namespace vantory {

namespace {

constexpr const char* kProgram = "Vantory";
constexpr const char* kBugReporter = "com.quarrywell.BugReporter";
constexpr const char* kUntoldCrash = "untoldCrash";  // in the record: a report that no delegate has heard of

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
void change(const std::string& plistPath, const std::function<void(PropertyListDictionary&)>& change) {
  (void)SettingsFile(plistPath).change(change, SettingsFile::Durability::Passing);
}

// The last report by name, which goes by date.
std::optional<std::string> lastReport(const std::string& folder, const std::string& appName) {
  std::vector<std::string> names = QWFileManager::contentsOfDirectory(folder);
  const std::string prefix = lowerCased(appName + "_");
  std::erase_if(names, [&](const std::string& name) { return !lowerCased(name).starts_with(prefix); });
  if (names.empty()) return std::nullopt;
  return paths::join(folder, *std::max_element(names.begin(), names.end()));
}

// The person's reports first, then those of the machine, then what the system keeps elsewhere.
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
  return platform().crashReports.newestSince(launch);
}

// One switch of the user's for all programs of the maker.
bool isSwitchedOff() {
  return globalSwitch("disable-crash-reporter");
}

bool hasBugReporter() {
  return platform().workspace.applicationPath(kBugReporter).has_value();
}

// Where it is not installed, the log names the report.
void openWithBugReporter(const std::string& report) {
  if (!hasBugReporter()) return QWLog::holdUntilNewLog(formatted("The crash report is %@", report));
  const Status opened = platform().workspace.openFile(report, kBugReporter);
  if (!opened) QWLog::holdUntilNewLog(formatted("Unable to open %@: %@", report, opened.error().text));
}

// What an earlier start without a delegate found.
std::optional<std::string> untoldCrash(const std::string& plistPath) {
  const PropertyListDictionary record = SettingsFile(plistPath).read();
  const PropertyList* value = record.find(kUntoldCrash);
  const std::string* report = value ? value->asString() : nullptr;
  if (!report || !QWFileManager::fileExistsAtPath(*report)) return std::nullopt;
  return *report;
}

// Later, because a start waits for nobody.
void tell(BugReporterDelegate& delegate, const std::string& report) {
  MainThread::shared().post([&delegate, report] { delegate.applicationDidCrashWithLog(report); });
}

}  // namespace

void QWBugReporter::startBugReporter() {
  startBugReporterWithDelegate(nullptr);
}

void QWBugReporter::startBugReporterWithDelegate(BugReporterDelegate* delegate) {
  if (const auto record = QWUserDefaults::settingsPath(true)) startBugReporter(kProgram, *record, delegate);
}

void QWBugReporter::startBugReporter(const std::string& appName, const std::string& plistPath,
                                     BugReporterDelegate* delegate) {
  guarded("startBugReporter:plistPath:delegate:", [&] {
    auto crash = checkForCrashes(appName, plistPath);
    if (!crash) crash = untoldCrash(plistPath);
    if (crash && delegate) tell(*delegate, *crash);
    // Only now: the search goes by the date that this replaces.
    change(plistPath, [&](PropertyListDictionary& record) {
      const Timestamp now = platform().clock.now();
      record.set("launch", now);
      // The record knows whole seconds: an end that was not before this start would pass for the end of this run.
      if (const auto exit = dateIn(record, "exit"); exit && exit->seconds >= now.seconds) record.remove("exit");
      if (delegate) record.remove(kUntoldCrash);
      if (crash && !delegate) record.set(kUntoldCrash, *crash);
    });
  });
}

void QWBugReporter::stopBugReporter() {
  if (const auto record = QWUserDefaults::settingsPath(true)) stopBugReporter(*record);
}

// Where this date is missing at the next start, a report of a crash is looked for.
void QWBugReporter::stopBugReporter(const std::string& plistPath) {
  guarded("stopBugReporter:", [&] {
    change(plistPath, [](PropertyListDictionary& record) { record.set("exit", platform().clock.now()); });
  });
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
  if (isSwitchedOff()) {
    platform().systemLog.write("Crash reporter disabled");
    QWLog::holdUntilNewLog("Crash reporter disabled");
  } else {
    openWithBugReporter(*report);
  }
  return report;
}

void QWBugReporter::showCrashNotice(const std::string& log) {
  if (isSwitchedOff() || hasBugReporter()) return;
  QWAlert::alertSheetWithMessageText(
      "Vantory ended unexpectedly the last time",
      formatted(
          "No finished work is lost. To get help, choose Gather Logs in the Help menu and send the archive that it "
          "puts on your desktop to Quarrywell, with a word on what you were doing. The report of the crash is %@.",
          log));
}

}  // namespace vantory
