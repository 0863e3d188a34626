// vantory-due STAMP INTERVAL SLACK: whether a scheduled job is due, INTERVAL seconds (less SLACK) after the date of the
// file STAMP. Ends as systemd's ExecCondition= understands it: with 0 when the job is due, with 1 when it is not, with
// 255 when that cannot be told.
//
// A stamp that is not there is made: the interval begins now. A stamp that could not be set after the run is refused,
// because the job would run at every tick. A stamp from the future is waited for, unless it is further away than any
// run can be: then the clock was wrong when it was set.
//
// A run that failed is tried again at the next tick, which comes twice SLACK after the last, and then after waits that
// double up to a day: each try may leave something unfinished. The empty file STAMP.tries keeps them in its dates,
// which a full disk takes too: that of the last change is the last try's, that of the last access the next one's.

#include <fcntl.h>
#include <sys/stat.h>

#include <algorithm>
#include <charconv>
#include <ctime>
#include <optional>
#include <string>
#include <string_view>

#include "platform/posix/files/Descriptor.h"

namespace {

enum Answer : int { Due = 0, NotDue = 1, Unknown = 255 };

std::optional<double> secondsIn(std::string_view text) {
  long long number = 0;
  const auto [end, failure] = std::from_chars(text.data(), text.data() + text.size(), number);
  if (failure != std::errc() || end != text.data() + text.size() || number < 0) return std::nullopt;
  return static_cast<double>(number);
}

// Notes the try when it may be made. Without the file it may: too often is better than never.
bool mayTry(const std::string& path, std::time_t lastRun, double interval, double slack) {
  constexpr int kFlags = O_RDWR | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY | O_CLOEXEC;
  constexpr double kLongestWait = 24 * 60 * 60;
  vantory::Descriptor file(open(path.c_str(), kFlags | O_CREAT | O_EXCL, S_IRUSR | S_IWUSR));
  const bool isNew = file.valid();
  if (!isNew) file = vantory::Descriptor(open(path.c_str(), kFlags));
  struct stat tries {};
  if (!file.valid() || fstat(file.get(), &tries) != 0) return true;
  const std::time_t now = std::time(nullptr);
  const bool hasFailed = !isNew && tries.st_mtime > lastRun && tries.st_mtime <= now;
  double wait = 0;
  if (hasFailed) {
    if (std::difftime(tries.st_atime, now) > slack) return false;
    wait = std::max({2 * std::difftime(tries.st_atime, tries.st_mtime), 4 * slack, 2.0});
  }
  wait = std::min({wait, interval, kLongestWait});
  const timespec dates[2] = {{now + static_cast<std::time_t>(wait), 0}, {now, 0}};
  futimens(file.get(), dates);
  return true;
}

std::optional<std::time_t> dateOf(const char* path) {
  constexpr int kFlags = O_RDWR | O_CREAT | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY | O_CLOEXEC;
  const vantory::Descriptor stamp(open(path, kFlags, S_IRUSR | S_IWUSR));
  struct stat info {};
  if (!stamp.valid() || fstat(stamp.get(), &info) != 0 || !S_ISREG(info.st_mode)) return std::nullopt;
  return info.st_mtime;
}

}  // namespace

int main(int argumentCount, char** arguments) {
  if (argumentCount != 4) return Unknown;
  const auto interval = secondsIn(arguments[2]);
  const auto slack = secondsIn(arguments[3]);
  if (!interval || !slack || *slack >= *interval) return Unknown;
  const auto lastRun = dateOf(arguments[1]);
  if (!lastRun) return Unknown;
  const double age = std::difftime(std::time(nullptr), *lastRun);
  const bool isDue = age >= *interval - *slack || age < -*interval;
  return isDue && mayTry(std::string(arguments[1]) + ".tries", *lastRun, *interval, *slack) ? Due : NotDue;
}
