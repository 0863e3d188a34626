// The desktop and the scheduler: asked about what there is not, so that nobody sees anything of it.
#include "selfcheck/PlatformChecks.h"

#include "platform/DefaultHandlers.h"
#include "platform/JobControl.h"
#include "platform/Messaging.h"
#include "platform/Workspace.h"

namespace vantory {

namespace {

constexpr const char* kNobody = "com.quarrywell.NothingOfThisName";  // an application's, or a job's
constexpr const char* kUnknown = "QWNothingOfThisName";              // a service's, or a signal's

Finding tellsWhatRuns(const Bench& bench) {
  Trial trial(bench);
  const Result<bool> runs = bench.platform.workspace.isRunning(kNobody);
  trial.does(runs);
  trial.sees(runs && !*runs, "what does not exist runs");
  return trial.finding();
}

Finding findsApplications(const Bench& bench) {
  Trial trial(bench);
  trial.sees(!bench.platform.workspace.applicationPath(kNobody), "what does not exist is installed");
  for (const char* manager : {"com.apple.finder", "org.gnome.Nautilus", "org.kde.dolphin"})
    if (const auto path = bench.platform.workspace.applicationPath(manager)) return trial.finding("such as " + *path);
  trial.passesOver("no file manager that it could find");
  return trial.finding();
}

Finding knowsTypes(const Bench& bench) {
  Trial trial(bench);
  const Result<std::string> type = bench.platform.defaultHandlers.typeOfExtension("txt");
  trial.does(type);
  if (!type) return trial.finding();
  const auto viewer = bench.platform.defaultHandlers.defaultViewer(*type);
  return trial.finding(*type + " is opened by " + viewer.value_or("no application"));
}

Finding tellsClients(const Bench& bench) {
  Trial trial(bench);
  const auto answer = bench.platform.taskClient.send(kUnknown, {"selfCheck"});
  trial.does(answer);
  trial.sees(answer && *answer == TaskClient::Answer::NotRegistered, "one that nobody registered answers");
  return trial.finding();
}

Finding announces(const Bench& bench) {
  Trial trial(bench);
  trial.does(bench.platform.announcements.announce(kUnknown));
  return trial.finding();
}

Finding knowsJobs(const Bench& bench) {
  Trial trial(bench);
  JobControl& jobs = bench.platform.jobs;
  const JobName job{.label = kNobody, .file = bench.path("job.plist")};
  trial.sees(!jobs.lastRun(job) && !jobs.lastTry(job), "a job that was never loaded has run");
  trial.does(jobs.unload(job));
  trial.does(jobs.remove(job));
  trial.does(jobs.runSucceeded());
  return trial.finding();
}

Finding wouldBeSeen(const Bench&) {
  return {Outcome::NotTried, "it would be seen on the screen"};
}

Finding wouldBeKept(const Bench&) {
  return {Outcome::NotTried, "it would change the user's settings"};
}

constexpr Check kChecks[] = {
    {"desktop", "tells whether an application runs", tellsWhatRuns},
    {"desktop", "finds applications", findsApplications},
    {"desktop", "quits, starts and activates applications", wouldBeSeen},
    {"desktop", "opens, shows and mails documents", wouldBeSeen},
    {"desktop", "knows what opens files of a kind", knowsTypes},
    {"desktop", "sets what opens files of a kind", wouldBeKept},
    {"desktop", "shows notifications", wouldBeSeen},
    {"desktop", "speaks to the maker's other programs", tellsClients},
    {"desktop", "announces to whoever listens", announces},
    {"schedule", "knows what is not scheduled", knowsJobs},
    {"schedule", "schedules backups", wouldBeKept},
};

}  // namespace

Checks sessionChecks() {
  return kChecks;
}

}  // namespace vantory
