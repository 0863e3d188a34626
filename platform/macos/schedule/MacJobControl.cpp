// Writes the second agent and the stamp, and has both agents loaded.
#include "platform/macos/schedule/MacJobControl.h"

#include <algorithm>
#include <cstdlib>
#include <string_view>

#include "base/Paths.h"
#include "base/PropertyListBytes.h"
#include "platform/posix/files/Errors.h"
#include "platform/posix/processes/HelperProgram.h"

namespace vantory {

namespace {

constexpr const char* kIsDueProgram = "vantory-due";
constexpr const char* kCatchUp = ".catchup";
constexpr std::chrono::seconds kLongestTick = std::chrono::hours(1);

// What a job may be called: a part of a file's name.
bool isLabel(std::string_view label) {
  constexpr std::size_t kLongest = 200;
  constexpr std::string_view kCharacters = "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789-_.";
  return !label.empty() && label.size() <= kLongest && label.front() != '.' && label.front() != '-' &&
         label.find_first_not_of(kCharacters) == std::string_view::npos;
}

std::string stampOf(const User& user, std::string_view label) {
  return user.home + "/Library/Application Support/Vantory/" + std::string(label) + ".lastrun";
}

// The shell takes the words as they are. Starting what runs already does nothing.
std::string catchUpAgent(const std::string& label, const std::string& isDue, const std::string& stamp,
                         const std::string& target, std::chrono::seconds interval) {
  const std::int64_t tick = std::min(interval, kLongestTick).count();
  PropertyListDictionary agent;
  agent.set("Label", label);
  agent.set("ProgramArguments",
            PropertyListArray{"/bin/sh", "-c", "\"$0\" \"$1\" \"$2\" 0 && exec /bin/launchctl kickstart \"$3\"",
                              textValue(isDue), textValue(stamp), std::to_string(interval.count()), target});
  agent.set("RunAtLoad", true);
  agent.set("StartInterval", tick);
  agent.set("ProcessType", "Background");
  return writeXmlPropertyList(agent);
}

Status unlessMissing(const Status& status) {
  return !status && meansMissing(status.error()) ? Status() : status;
}

}  // namespace

MacJobControl::MacJobControl(const Users& users, FileSystem& files, FileMetadata& metadata, LaunchControl control)
    : users_(users), files_(files), metadata_(metadata), control_(control) {}

std::optional<User> MacJobControl::user() const {
  return users_.isSuperuser() ? users_.consoleUser() : users_.processUser();
}

Result<MacJobControl::Places> MacJobControl::placesOf(const JobName& job) const {
  if (job.domain == JobName::Domain::Machine)
    return errorWithText(std::errc::not_supported, job.file, "jobs for the whole machine are not supported here");
  if (!isLabel(job.label)) return errorWithText(std::errc::invalid_argument, job.label, "is no name for a job");
  const std::optional<User> user = this->user();
  if (!user) return errorWithText(std::errc::no_such_process, job.label, "there is no user to run it for");
  const std::string label = job.label + kCatchUp;
  return Places{.user = *user,
                .catchUpLabel = label,
                .catchUpFile = user->home + "/Library/LaunchAgents/" + label + ".plist",
                .stamp = stampOf(*user, job.label)};
}

// A job that was loaded before is better than none: its file is loaded at the next login.
Status MacJobControl::load(const Job& job) {
  const Result<Places> places = placesOf(job.name);
  if (!places) return places.error();
  const bool isNew = !files_.info(places->stamp, Links::DoNotFollow);
  Status loaded = write(job, *places);
  if (loaded) loaded = replace(*places, job.name.label, job.name.file);
  if (loaded) loaded = replace(*places, places->catchUpLabel, places->catchUpFile);
  if (!loaded && isNew) {
    (void)unload(job.name);
    (void)remove(job.name);
  }
  return loaded;
}

// The interval is counted from the date of the stamp.
Status MacJobControl::write(const Job& job, const Places& places) {
  if (!job.program.starts_with('/') || !job.name.file.starts_with('/') || job.interval <= std::chrono::seconds(0))
    return errorWithText(std::errc::invalid_argument, job.name.label, "names no program, no file or no interval");
  const std::string isDue = helperProgram(kIsDueProgram);
  if (isDue.empty()) return errorWithText(std::errc::no_such_file_or_directory, kIsDueProgram, "is not installed");
  const std::string agent = catchUpAgent(places.catchUpLabel, isDue, places.stamp,
                                         LaunchControl::target(places.user.id, job.name.label), job.interval);
  Status done = files_.makeFolder(paths::parent(places.stamp));
  if (done) done = files_.makeFolder(paths::parent(places.catchUpFile));
  if (done) done = files_.write(places.catchUpFile, agent, {});
  if (done) done = files_.write(places.stamp, "", {});
  if (done && job.lastRun) done = metadata_.setModified(places.stamp, *job.lastRun);
  return done;
}

Status MacJobControl::replace(const Places& places, const std::string& label, const std::string& file) {
  if (Status gone = control_.unload(places.user.id, label); !gone) return gone;
  return control_.load(places.user.id, file);
}

Status MacJobControl::unload(const JobName& job) {
  const Result<Places> places = placesOf(job);
  if (!places || !files_.info(places->stamp, Links::DoNotFollow)) return {};  // never loaded
  const Status catchUp = control_.unload(places->user.id, places->catchUpLabel);
  const Status own = control_.unload(places->user.id, job.label);
  return own ? catchUp : own;
}

// One that cannot be removed does not keep the others from it.
Status MacJobControl::remove(const JobName& job) {
  const Result<Places> places = placesOf(job);
  if (!places) return {};
  Status all;
  for (const std::string& path : {places->catchUpFile, places->stamp, places->stamp + ".tries"})
    if (Status removed = unlessMissing(files_.remove(path)); !removed) all = removed;
  return all;
}

std::optional<Timestamp> MacJobControl::lastRun(const JobName& job) const {
  const Result<Places> places = placesOf(job);
  return places ? dateOf(places->stamp) : std::nullopt;
}

// The helper that decides whether a run is due notes its tries there.
std::optional<Timestamp> MacJobControl::lastTry(const JobName& job) const {
  const Result<Places> places = placesOf(job);
  return places ? dateOf(places->stamp + ".tries") : std::nullopt;
}

std::optional<Timestamp> MacJobControl::dateOf(const std::string& file) const {
  const Result<FileInfo> info = files_.info(file, Links::DoNotFollow);
  if (!info || info->type != FileType::File) return std::nullopt;
  return info->modified;
}

// The session names the job whose run this is. Never makes the stamp anew: the job may have been removed meanwhile.
Status MacJobControl::runSucceeded() {
  const char* label = std::getenv("XPC_SERVICE_NAME");
  const std::optional<User> user = users_.isSuperuser() ? std::nullopt : users_.processUser();
  if (!label || !isLabel(label) || !user) return {};
  return unlessMissing(metadata_.setModified(stampOf(*user, label), std::nullopt));
}

}  // namespace vantory
