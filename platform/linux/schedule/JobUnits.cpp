// Translates a job into a service and a timer.
#include "platform/linux/schedule/JobUnits.h"

#include <array>
#include <chrono>
#include <cstdio>
#include <string_view>

namespace vantory {

namespace {

using std::chrono::hours;
using std::chrono::minutes;
using std::chrono::seconds;

// How often the timer asks whether the job is due, and how much too early a run may be: half of that, so that a run's
// own length never pushes the next one to the following tick.
struct JobTick {
  const char* calendar;  // as OnCalendar= takes it
  const char* accuracy;  // as AccuracySec= takes it
  seconds slack;
};

// An hour for intervals of days, less for those of hours and minutes.
JobTick tickOf(seconds interval) {
  if (interval >= hours(12)) return {"hourly", "1min", minutes(30)};
  if (interval >= minutes(12)) return {"minutely", "1s", seconds(30)};
  return {"*:*:*", "100ms", seconds(0)};
}

// The text as one word of a command line in a unit file.
std::string unitWord(std::string_view text) {
  std::string word = "\"";
  for (const char c : text) {
    const auto byte = static_cast<unsigned char>(c);
    if (byte < ' ' || byte > '~') {
      std::array<char, 5> code{};
      std::snprintf(code.data(), code.size(), "\\x%02x", byte);
      word.append(code.data());
      continue;
    }
    if (c == '"' || c == '\\') word += '\\';
    if (c == '%') word += '%';
    word += c;
  }
  return word += '"';
}

// The tools' arguments hold no variables: the colon switches them off, so that "$" is a character like all others.
std::string command(std::string_view prefix, const std::string& program, const std::vector<std::string>& words) {
  std::string line(prefix);
  line.append(unitWord(program));
  for (const std::string& word : words) line.append(" ").append(unitWord(word));
  return line;
}

// A schedule may outlive the program: then its runs are passed over in silence. Such a line knows no quotes and no
// escapes.
std::string onlyWhileInstalled(const std::string& program) {
  std::string line = "ConditionFileIsExecutable=";
  for (const char c : program) {
    if (c == '%') line += '%';
    if (c == '\n') return "";
    line += c;
  }
  return line += '\n';
}

}  // namespace

// systemd's own calendar cannot say "every N days", and a timer that counts from the last run forgets it at every
// logout. So the timer ticks often, and a tick is passed over unless the stamp is old enough. The program, whose exit
// code tells less, sets the stamp itself after a run that succeeded: one that failed, or that a shutdown cut off, is
// tried again at the next tick, and then ever later. Many ticks in a row are no reason for systemd to stop starting the
// service.
std::string serviceUnit(const Job& job, const JobTools& tools) {
  const std::string interval = std::to_string(job.interval.count());
  const std::string slack = std::to_string(tickOf(job.interval).slack.count());
  std::string text = "[Unit]\nDescription=Scheduled run of " + job.name.label + "\nStartLimitIntervalSec=0\n";
  text.append(onlyWhileInstalled(job.program)).append("\n");
  text.append("[Service]\nType=oneshot\n");
  text.append("ExecCondition=").append(command(":", tools.isDue, {tools.stamp, interval, slack})).append("\n");
  text.append("ExecStart=").append(command(":@", job.program, job.arguments)).append("\n");
  text.append("Environment=").append(unitWord(std::string(kStampVariable) + "=" + tools.stamp)).append("\n");
  text.append("Nice=10\nIOSchedulingClass=idle\n");
  return text;
}

// Persistent: a tick that was missed while the user was away is made up for at the next login.
std::string timerUnit(const Job& job) {
  const JobTick tick = tickOf(job.interval);
  std::string text = "[Unit]\nDescription=Schedule of " + job.name.label + "\n\n[Timer]\n";
  text.append("OnCalendar=").append(tick.calendar).append("\nAccuracySec=").append(tick.accuracy);
  text.append("\nPersistent=true\n\n[Install]\nWantedBy=timers.target\n");
  return text;
}

}  // namespace vantory
