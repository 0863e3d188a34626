// vantory-due STAMP INTERVAL SLACK: whether a scheduled job is due, INTERVAL seconds (less SLACK) after the date of the
// file STAMP. Ends as systemd's ExecCondition= understands it: with 0 when the job is due, with 1 when it is not, with
// 255 when that cannot be told.
//
// A stamp that is not there is made: the interval begins now. A stamp that could not be set after the run is refused,
// because the job would run at every tick. A stamp from the future is waited for, unless it is further away than any
// run can be: then the clock was wrong when it was set.

#include <fcntl.h>
#include <sys/stat.h>

#include <charconv>
#include <ctime>
#include <optional>
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
  return age >= *interval - *slack || age < -*interval ? Due : NotDue;
}
