// Writes job files, and has them loaded and unloaded.
#include "backups/QWLaunchd.h"

#include <chrono>
#include <string_view>
#include <utility>

#include "base/Paths.h"
#include "base/PropertyListBytes.h"
#include "base/Text.h"
#include "platform/Clock.h"
#include "platform/FileSystem.h"
#include "platform/JobControl.h"
#include "platform/SystemLog.h"
#include "platform/Users.h"
#include "services/QWCmdUtils.h"
#include "services/QWLocalPaths.h"
#include "services/Runtime.h"
#include "services/files/QWAuthorization.h"
#include "services/files/QWFileManager.h"
#include "services/log/QWLog.h"
#include "services/messages/QWAlert.h"
#include "services/tools/QWTask.h"

namespace vantory {

namespace {

using namespace std::chrono_literals;

Platform& platform() {
  return Runtime::current().platform();
}

QWAuthorization& authorization() {
  return QWAuthorization::sharedController();
}

void pause(std::chrono::microseconds duration) {
  platform().clock.sleep(duration);
}

void print(const std::string& message) {
  platform().systemLog.write(printable(message));
}

// None when nobody's folders can be resolved.
std::optional<JobName> jobNamed(const std::string& label, bool user, bool launchAgent) {
  const auto library = QWLocalPaths::libraryDirectory(user);
  if (!library) {
    QWLog::appendLogAndPrint("The job %@ is left alone: nobody is logged in at the console.", label);
    return std::nullopt;
  }
  const std::string folder = paths::join(*library, launchAgent ? "LaunchAgents" : "LaunchDaemons");
  return JobName{.label = label,
                 .file = formatted("%@/%@.plist", folder, label),
                 .domain = user ? JobName::Domain::User : JobName::Domain::Machine};
}

// False where there is no window to show it.
bool showSheet(const std::string& title, const std::string& folder) {
  const auto& ask = QWAlert::sharedController().ask;
  if (!QWCmdUtils::sharedController().hasGUI() || !ask) return false;
  ask({.messageText = title,
       .defaultButton = "OK",
       .informativeText = formatted("Please check you have correct permissions for the directory %@.", folder)});
  return true;
}

// Always false.
bool failToStart(const std::string& title, const JobName& job) {
  const std::string folder = paths::parent(job.file);
  const std::string message =
      formatted("%@. Please check you have correct permissions for the directory %@", title, folder);
  print(message);
  if (!showSheet(title, folder)) QWLog::appendLog("%@", message);
  return false;
}

void failToRemove(const JobName& job) {
  const std::string title = "Error: Unable to remove LaunchAgent";
  const std::string folder = paths::parent(job.file);
  if (!showSheet(title, folder))
    QWLog::appendLogAndPrint("%@. Please check you have correct permissions for the directory %@", title, folder);
}

// A failure is logged; a success needs no word.
void tell(const Status& outcome, const char* verb, const JobName& job) {
  if (!outcome) QWLog::appendLog("Unable to %@ the job %@: %@", verb, job.label, outcome.error().text);
}

std::chrono::seconds intervalIn(const PropertyListDictionary& settings) {
  const PropertyList* value = settings.find("StartInterval");
  const auto* number = value ? std::get_if<std::int64_t>(&value->content()) : nullptr;
  return std::chrono::seconds(number ? *number : 0);
}

std::string textIn(const PropertyListDictionary& settings, std::string_view key) {
  const PropertyList* value = settings.find(key);
  return value ? textOf(*value).value_or("") : "";
}

// A job without arguments gets its program's path as the name it starts under.
Job jobWith(const JobName& name, const PropertyListDictionary& settings) {
  Job job{.name = name, .program = textIn(settings, "Program"), .arguments = {}, .interval = intervalIn(settings)};
  const PropertyList* arguments = settings.find("ProgramArguments");
  const PropertyListArray* list = arguments ? arguments->asArray() : nullptr;
  if (list)
    for (const PropertyList& argument : *list) job.arguments.push_back(textOf(argument).value_or(""));
  if (job.arguments.empty()) job.arguments.push_back(job.program);
  return job;
}

std::chrono::seconds intervalInFile(const std::string& path) {
  const auto bytes = platform().files.read(path);
  const auto settings = bytes ? parsePropertyList(*bytes) : std::nullopt;
  const auto* dictionary = settings ? settings->asDictionary() : nullptr;
  return dictionary ? intervalIn(*dictionary) : 0s;
}

// The windowed program reloads its job at every start. Were each loading a new beginning, a user who starts it often
// would never see the job run. A changed interval is a new beginning.
std::optional<Timestamp> lastRunToKeep(const Job& job) {
  if (intervalInFile(job.name.file) != job.interval) return std::nullopt;
  return platform().jobs.lastRun(job.name);
}

void stop(const JobName& job) {
  tell(platform().jobs.unload(job), "unload", job);
  tell(platform().jobs.remove(job), "remove", job);
}

// As the user first.
void removeFileOf(const JobName& job, bool shouldAuth) {
  if (!QWFileManager::itemExistsAtPath(job.file)) return;
  if (const Status removed = platform().files.remove(job.file); !removed) {
    QWLog::appendLog("Unable to delete the job's file: %@", removed.error().text);
    if (shouldAuth && !authorization().authRemoveFile(job.file)) return failToRemove(job);
  }
  pause(500us);
}

// What follows tells of a failure.
void makeFolderFor(const JobName& job) {
  const std::string folder = paths::parent(job.file);
  const Status made = platform().files.makeFolder(folder);
  if (!made && job.domain == JobName::Domain::Machine) (void)authorization().authCreateDir(folder);
}

// The draft goes in any case.
bool moveIntoPlace(const std::string& draft, const JobName& job) {
  if (QWFileManager::itemExistsAtPath(job.file)) {
    (void)authorization().authRemoveFile(job.file);
    pause(500us);
  }
  print("Unable to write plist - trying to authorize...");
  const bool moved = authorization().authMoveFile(draft, job.file);
  if (moved) pause(1s);
  if (!moved) failToStart("Error: Unable to create LaunchAgent", job);
  (void)platform().files.remove(draft);
  return moved;
}

// Written elsewhere first and then moved with administrator rights.
bool writeWithRights(const std::string& text, const JobName& job) {
  const auto folder = QWLocalPaths::tempDirectory();
  const std::string draft = folder ? paths::join(*folder, paths::lastComponent(job.file)) : "";
  if (!folder || !platform().files.write(draft, text, {}))
    return failToStart("Error: Unable to write LaunchAgent data", job);
  return moveIntoPlace(draft, job);
}

enum class Written { Failed, AsUser, WithRights };

Written writeFile(const PropertyListDictionary& settings, const JobName& job) {
  const std::string text = writeXmlPropertyList(settings);
  const Status written = platform().files.write(job.file, text, {});
  if (written) return Written::AsUser;
  QWLog::appendLog("Unable to write the job's file: %@", written.error().text);
  return writeWithRights(text, job) ? Written::WithRights : Written::Failed;
}

// A tool that the superuser's process runs itself would follow a link that a user has planted at the path; the
// privileged runner does not.
void setOwnerAndMode(const JobName& job, bool withRights) {
  const auto run = [&](const std::string& tool, const QWTask::Arguments& arguments) {
    if (withRights || platform().users.isSuperuser())
      (void)authorization().authExecTask(tool, arguments);
    else
      QWTask::runTask(tool, arguments);
  };
  if (job.domain == JobName::Domain::Machine) run("/usr/sbin/chown", {"root:wheel", job.file});
  if (withRights) pause(500us);
  run("/bin/chmod", {"644", job.file});
  if (withRights) pause(1s);
}

}  // namespace

bool QWLaunchd::startJob(const StartJob& start) {
  const auto name = jobNamed(start.job, start.user, start.launchAgent);
  if (!name) return false;
  Job job = jobWith(*name, start.settings);
  makeFolderFor(*name);
  if (QWFileManager::itemExistsAtPath(name->file)) {
    job.lastRun = lastRunToKeep(job);
    removeFileOf(*name, start.shouldAuth);  // the schedule stays until the new one is in its place
  }
  const Written written = writeFile(start.settings, *name);
  if (written == Written::Failed) return false;
  if (start.killProcessName) QWTask::runTask("/usr/bin/killall", {*start.killProcessName});
  setOwnerAndMode(*name, start.shouldAuth || written == Written::WithRights);
  tell(platform().jobs.load(job), "load", *name);
  return true;
}

bool QWLaunchd::startLaunchAgent(const std::string& label, const PropertyListDictionary& settings, bool user) {
  return startJob({.job = label, .settings = settings, .user = user});
}

void QWLaunchd::stopJob(const std::string& label, bool user, bool launchAgent, bool) {
  if (const auto job = jobNamed(label, user, launchAgent)) stop(*job);
}

void QWLaunchd::removeJob(const std::string& label, bool user, bool launchAgent, bool shouldAuth) {
  const auto job = jobNamed(label, user, launchAgent);
  if (!job) return;
  stop(*job);
  removeFileOf(*job, shouldAuth);
}

void QWLaunchd::removeLaunchAgent(const std::string& label, bool) {
  removeJob(label, true, true, true);
}

}  // namespace vantory
