// Puts unit files in place and has the service manager read them.
#include "platform/linux/schedule/LinuxJobControl.h"

#include <algorithm>
#include <string_view>

#include "base/Paths.h"
#include "platform/FileMetadata.h"
#include "platform/FileSystem.h"
#include "platform/Users.h"
#include "platform/linux/schedule/JobUnits.h"
#include "platform/posix/files/EnvironmentFolder.h"
#include "platform/posix/files/Errors.h"
#include "platform/posix/processes/HelperProgram.h"

namespace vantory {

namespace {

constexpr const char* kIsDueProgram = "vantory-due";

// What a unit may be called, with room for what is put before and behind it in a file's name.
bool isUnitName(std::string_view label) {
  constexpr std::size_t kLongest = 200;
  constexpr std::string_view kCharacters = "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789-_.:";
  return !label.empty() && label.size() <= kLongest && label.front() != '.' && label.front() != '-' &&
         label.find_first_not_of(kCharacters) == std::string_view::npos;
}

Status write(FileSystem& files, const std::string& path, const std::string& text) {
  if (Status made = files.makeFolder(paths::parent(path)); !made) return made;
  return files.write(path, text, {});
}

}  // namespace

LinuxJobControl::LinuxJobControl(const Users& users, FileSystem& files, FileMetadata& metadata, UserManager manager)
    : users_(users), files_(files), metadata_(metadata), manager_(std::move(manager)) {}

// Where the user's configuration, state and data lie decides the environment, but for the superuser's process.
Result<LinuxJobControl::Places> LinuxJobControl::placesOf(const JobName& job) const {
  if (job.domain == JobName::Domain::Machine)
    return errorWithText(std::errc::not_supported, job.file, "jobs for the whole machine are not supported here");
  if (!isUnitName(job.label)) return errorWithText(std::errc::invalid_argument, job.label, "is no name for a job");
  const std::optional<User> user = users_.isSuperuser() ? users_.consoleUser() : users_.processUser();
  if (!user) return errorWithText(std::errc::no_such_process, job.label, "there is no user to run it for");
  const auto folder = [&](const char* variable, const char* usual) {
    const auto configured = users_.isSuperuser() ? std::nullopt : environmentFolder(variable);
    return configured.value_or(user->home + usual);
  };
  const std::string units = folder("XDG_CONFIG_HOME", "/.config") + "/systemd/user/";
  const std::string timerName = job.label + ".timer";
  return Places{.timerName = timerName,
                .service = units + job.label + ".service",
                .timer = units + timerName,
                .stamp = folder("XDG_STATE_HOME", "/.local/state") + "/" + job.label + ".lastrun",
                .enabling = units + "timers.target.wants/" + timerName,
                .managerStamp = folder("XDG_DATA_HOME", "/.local/share") + "/systemd/timers/stamp-" + timerName};
}

// A job that was loaded before is better than none.
Status LinuxJobControl::load(const Job& job) {
  const Result<Places> places = placesOf(job.name);
  if (!places) return places.error();
  const bool isNew = !files_.info(places->timer, Links::DoNotFollow);
  Status loaded = write(job, *places);
  if (loaded) loaded = start(*places);
  if (!loaded && isNew) (void)remove(job.name);
  return loaded;
}

// The interval is counted from the date of the stamp.
Status LinuxJobControl::write(const Job& job, const Places& places) {
  if (!job.program.starts_with('/') || job.interval <= std::chrono::seconds(0))
    return errorWithText(std::errc::invalid_argument, job.name.label, "names no program or no interval");
  const std::string isDue = helperProgram(kIsDueProgram);
  if (isDue.empty()) return errorWithText(std::errc::no_such_file_or_directory, kIsDueProgram, "is not installed");
  Status done = vantory::write(files_, places.service, serviceUnit(job, {isDue, places.stamp}));
  if (done) done = vantory::write(files_, places.timer, timerUnit(job));
  if (done) done = vantory::write(files_, places.stamp, "");
  if (done && job.lastRun) done = metadata_.setModified(places.stamp, *job.lastRun);
  return done;
}

// A timer that runs already takes a new interval only when it is started again.
Status LinuxJobControl::start(const Places& places) {
  if (Status read = manager_.run({"daemon-reload"}); !read) return read;
  if (Status enabled = manager_.run({"--quiet", "enable", places.timerName}); !enabled) return enabled;
  return manager_.run({"restart", places.timerName});
}

// Stops the timer, also for later sessions; its files stay.
Status LinuxJobControl::unload(const JobName& job) {
  const Result<Places> places = placesOf(job);
  if (!places || !files_.info(places->timer, Links::DoNotFollow)) return {};  // never loaded
  return manager_.run({"--quiet", "disable", "--now", places->timerName});
}

// One that cannot be removed does not keep the others from it.
Status LinuxJobControl::remove(const JobName& job) {
  const Result<Places> places = placesOf(job);
  if (!places) return {};
  Status all;
  for (const std::string& path : {places->enabling, places->timer, places->service, places->stamp,
                                  places->stamp + ".tries", places->managerStamp})
    if (Status removed = files_.remove(path); !removed && !meansMissing(removed.error())) all = removed;
  return all;
}

std::optional<Timestamp> LinuxJobControl::lastRun(const JobName& job) const {
  const Result<Places> places = placesOf(job);
  return places ? dateOf(places->stamp) : std::nullopt;
}

// The helper that decides whether a run is due notes its tries there.
std::optional<Timestamp> LinuxJobControl::lastTry(const JobName& job) const {
  const Result<Places> places = placesOf(job);
  return places ? dateOf(places->stamp + ".tries") : std::nullopt;
}

std::optional<Timestamp> LinuxJobControl::dateOf(const std::string& file) const {
  const Result<FileInfo> info = files_.info(file, Links::DoNotFollow);
  if (!info || info->type != FileType::File) return std::nullopt;
  return info->modified;
}

// Never makes the stamp anew: the job may have been removed meanwhile.
Status LinuxJobControl::runSucceeded() {
  const auto stamp = users_.isSuperuser() ? std::nullopt : environmentFolder(kStampVariable);
  const Status set = stamp ? metadata_.setModified(*stamp, std::nullopt) : Status();
  return !set && meansMissing(set.error()) ? Status() : set;
}

}  // namespace vantory
