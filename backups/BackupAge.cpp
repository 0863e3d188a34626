// Compares the dates of backups with the clock, and with what the schedule has left.
#include "backups/BackupAge.h"

#include <algorithm>

#include "backups/AutosaveSchedule.h"
#include "backups/QWDataController.h"
#include "base/Format.h"
#include "platform/Clock.h"
#include "services/QWCmdUtils.h"
#include "services/Runtime.h"

namespace vantory {

namespace {

constexpr std::int64_t kHour = 60 * 60;
constexpr std::int64_t kDay = 24 * kHour;

std::shared_ptr<QWBackup> newestGood(const BackupList& backups, bool onlyAutomatic) {
  std::shared_ptr<QWBackup> newest;
  for (const auto& backup : backups) {
    if (!backup->isComplete() || !backup->date() || (onlyAutomatic && !backup->isAutosave())) continue;
    if (!newest || *newest->date() < *backup->date()) newest = backup;
  }
  return newest;
}

std::string ageInWords(std::int64_t seconds) {
  if (seconds < kHour) return "less than an hour";
  const bool isRecent = seconds < 2 * kDay;
  return counted(static_cast<std::size_t>(seconds / (isRecent ? kHour : kDay)), isRecent ? "hour" : "day");
}

// What the stamps of the schedule's runs tell.
std::string reason(std::int64_t now, std::int64_t interval) {
  const AutosaveSchedule::Runs runs = AutosaveSchedule::runs();
  // The window loads it when it opens.
  if (!runs.last)
    return QWCmdUtils::sharedController().hasGUI() ? "The schedule was not loaded: the log tells whether it is now."
                                                   : "The schedule is not loaded; the window loads it when it opens.";
  if (runs.lastTry && *runs.last < *runs.lastTry)
    return formatted("The last try failed, on %@: its log tells why.",
                     localTimeText(*runs.lastTry, "%Y-%m-%d %H:%M:%S"));
  if (now - runs.last->seconds > 2 * interval)
    return "The schedule has not run since: the computer was off, or you were not logged in.";
  return "";
}

// Two intervals from the newest, or from when the schedule last ran or began; before that there is nothing to miss.
std::optional<std::string> overdueIn(const BackupList& backups, std::int64_t now) {
  const auto interval = AutosaveSchedule::interval();
  if (!interval) return std::nullopt;
  const auto newest = newestGood(backups, true);
  const auto begun = AutosaveSchedule::runs().last;
  const auto since = newest ? std::max(newest->date(), begun) : begun;
  if (!since || (now - since->seconds) / 2 <= *interval) return std::nullopt;
  std::string text = newest ? formatted("Scheduled backups do not happen: the last complete one is %@ old.",
                                        ageInWords(now - newest->date()->seconds))
                            : "Scheduled backups do not happen: there is no complete one.";
  if (const std::string why = reason(now, *interval); !why.empty()) text.append(" ").append(why);
  return text;
}

}  // namespace

BackupAge ageOf(const BackupList& backups) {
  // Backups that cannot be read are not none.
  if (QWDataController::sharedController().libraryError())
    return {.lastGood = nullptr, .text = "How old the last complete backup is cannot be told.", .overdue = {}};
  const std::int64_t now = Runtime::current().platform().clock.now().seconds;
  BackupAge age{.lastGood = newestGood(backups, false), .text = {}, .overdue = overdueIn(backups, now)};
  age.text = age.lastGood ? formatted("The last complete backup, \"%@\", is %@ old.", age.lastGood->name(),
                                      ageInWords(now - age.lastGood->date()->seconds))
                          : "There is no complete backup.";
  return age;
}

}  // namespace vantory
