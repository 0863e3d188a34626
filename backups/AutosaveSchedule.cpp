// Turns the settings of scheduled backups into a job, at the start and after a change.
#include "backups/AutosaveSchedule.h"

#include <algorithm>
#include <cstdint>
#include <limits>
#include <mutex>

#include "backups/QWLaunchd.h"
#include "platform/JobControl.h"
#include "platform/SystemInfo.h"
#include "services/Runtime.h"
#include "services/log/QWLog.h"
#include "services/settings/QWUserDefaults.h"
#include "services/settings/SettingsKeys.h"

namespace vantory {

namespace {

constexpr std::int64_t kSecondsPerDay = 86400;

bool isOn() {
  return QWUserDefaults::standardUserDefaults().integerForKey(setting::kPeriodicAutosave) == 1;
}

std::int64_t intervalInSeconds() {
  constexpr long long kMostDays = std::numeric_limits<std::int64_t>::max() / kSecondsPerDay;
  const long long days = QWUserDefaults::standardUserDefaults().integerForKey(setting::kAutosaveFrequency);
  return std::clamp(days, 1LL, kMostDays) * kSecondsPerDay;
}

// One thread at a time reads the settings and has the job follow them, so that the newest ones win.
std::mutex& following() {
  static std::mutex mutex;
  return mutex;
}

void load() {
  PropertyListDictionary job;
  job.set("Label", AutosaveSchedule::kLabel);
  job.set("Program", textValue(Runtime::current().platform().system.executablePath()));
  job.set("ProgramArguments", PropertyListArray{"Vantory", "-autobackup"});
  job.set("StartInterval", intervalInSeconds());
  QWLog::appendLog("Reloading autosave launchd job");
  // A failure has been told where it happened; the settings stay.
  (void)QWLaunchd::startLaunchAgent(AutosaveSchedule::kLabel, job, true);
}

}  // namespace

std::optional<std::int64_t> AutosaveSchedule::interval() {
  QWUserDefaults& settings = QWUserDefaults::standardUserDefaults();
  // The command line knows no defaults: there a schedule that nobody chose shows by its runs.
  const bool isKnown = settings.objectForKey(setting::kPeriodicAutosave).has_value();
  if (!(isKnown ? isOn() : runs().last.has_value())) return std::nullopt;
  if (!settings.objectForKey(setting::kAutosaveFrequency)) return setting::kUsualAutosaveFrequency * kSecondsPerDay;
  return intervalInSeconds();
}

AutosaveSchedule::Runs AutosaveSchedule::runs() {
  const JobControl& jobs = Runtime::current().platform().jobs;
  const JobName name{.label = kLabel, .file = {}};
  return {.last = jobs.lastRun(name), .lastTry = jobs.lastTry(name)};
}

void AutosaveSchedule::apply() {
  const std::lock_guard lock(following());
  if (isOn()) return load();
  QWLog::appendLog("Removing autosave launchd job");
  QWLaunchd::removeLaunchAgent(kLabel, true);
}

void AutosaveSchedule::applyAtStart() {
  const std::lock_guard lock(following());
  if (isOn()) load();
}

}  // namespace vantory
