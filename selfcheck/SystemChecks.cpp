// The machine and its users: asked, and compared with what must be so.
#include "selfcheck/PlatformChecks.h"

#include "base/Format.h"
#include "platform/Clock.h"
#include "platform/CrashReports.h"
#include "platform/FileMetadata.h"
#include "platform/FileSystem.h"
#include "platform/PrivilegedRunner.h"
#include "platform/StandardFolders.h"
#include "platform/SystemInfo.h"
#include "platform/TrustedFiles.h"
#include "platform/Users.h"

namespace vantory {

namespace {

Finding describesMachine(const Bench& bench) {
  Trial trial(bench);
  const SystemInfo& system = bench.platform.system;
  trial.sees(!system.systemName().empty(), "the system has no name");
  trial.sees(system.processorCount() > 0 && system.memoryBytes() > 0, "it has no processor, or no memory");
  trial.sees(system.workingDirectory().starts_with('/'), "there is no working directory");
  trial.sees(system.uniqueString() != system.uniqueString(), "what should be unique is not");
  trial.sees(bench.isThere(system.executablePath()), "this program is not where it is said to lie");
  return trial.finding(formatted("%i processors, %i MiB", system.processorCount(), system.memoryBytes() >> 20));
}

Finding tellsTime(const Bench& bench) {
  Trial trial(bench);
  Clock& clock = bench.platform.clock;
  const Timestamp before = clock.now();
  clock.sleep(std::chrono::milliseconds(2));
  trial.sees(before < clock.now(), "the clock stands still");
  const Result<FileInfo> made = bench.platform.files.info(trial.put("now", ""), Links::DoNotFollow);
  trial.does(made);
  constexpr std::int64_t kMinute = 60;
  trial.sees(
      made && made->modified.seconds > before.seconds - kMinute && made->modified.seconds < before.seconds + kMinute,
      "files get another time than the clock's");
  return trial.finding();
}

Finding knowsUsers(const Bench& bench) {
  Trial trial(bench);
  const Users& users = bench.platform.users;
  const auto user = users.processUser();
  trial.sees(user && user->home.starts_with('/'), "this user has no home");
  const auto atConsole = users.consoleUser();
  return trial.finding((users.isSuperuser() ? "the superuser, "
                        : user              ? users.nameOf(*user) + ", "
                                            : "") +
                       (atConsole ? "at the screen " + users.nameOf(*atConsole) : "nobody at the screen"));
}

Finding knowsFolders(const Bench& bench) {
  Trial trial(bench);
  const StandardFolders& folders = bench.platform.folders;
  const std::string home = "/home-of-nobody";
  using enum StandardFolder;
  for (const StandardFolder folder : {Applications, Library, Caches, ApplicationSupport}) {
    const auto users = folders.userFolder(folder, home);
    const auto machines = folders.localFolder(folder);
    trial.sees(users && paths::isWithin(*users, home), "a folder of the user's lies outside of the home");
    trial.sees(machines && machines->starts_with('/'), "a folder of the machine's is missing");
  }
  trial.sees(folders.userFolder(Trash, home).has_value(), "there is no Trash");
  return trial.finding();
}

Finding readsTrustedFiles(const Bench& bench) {
  Trial trial(bench);
  trial.does(bench.platform.files.makeFolder(bench.path("catalogs")));
  trial.put("catalogs/own.plist", "text");
  trial.put("catalogs/large.plist", "too much of it");
  const auto read = bench.platform.trustedFiles.read(bench.path("catalogs"), ".plist", {.files = 2, .bytes = 10},
                                                     TrustedOwners::UserAndSuperuser);
  trial.does(read);
  trial.sees(read && read->size() == 2 && !read->front().bytes && read->back().bytes,
             "it reads what is too large, or not what it should");
  return trial.finding();
}

Finding knowsAdministratorsTools(const Bench& bench) {
  Trial trial(bench);
  const PrivilegedRunner& privileged = bench.platform.privileged;
  if (!privileged.knows(kMachineSettingTool)) trial.passesOver("administrator rights cannot be obtained here");
  for (const char* tool : {"/bin/cp", "/bin/mv", "/bin/rm", "/bin/mkdir", "/bin/chmod", "/usr/bin/touch",
                           "/usr/bin/chattr", "/usr/sbin/chown", kMachineSettingTool})
    trial.sees(privileged.knows(tool), std::string(tool) + " is not known");
  trial.sees(!privileged.knows("/bin/sh"), "a shell passes for a tool of its");
  return trial.finding();
}

Finding obtainsRights(const Bench& bench) {
  if (bench.platform.privileged.isAuthorized()) return {Outcome::Held, "it has them already"};
  return {Outcome::NotTried, "it would ask for a password"};
}

Finding findsCrashReports(const Bench& bench) {
  Trial trial(bench);
  const auto report = bench.platform.crashReports.newestSince({});
  trial.sees(!report || bench.isThere(*report), "a report is not where it is said to lie");
  return trial.finding(report ? "newest: " + paths::lastComponent(*report) : "there is none");
}

Finding writesSystemLog(const Bench&) {
  return {Outcome::NotTried, "it would leave a line"};
}

constexpr Check kChecks[] = {
    {"system", "describes the machine", describesMachine},
    {"system", "tells the time", tellsTime},
    {"system", "knows who runs it", knowsUsers},
    {"system", "knows the standard folders", knowsFolders},
    {"system", "reads catalog files that are to be trusted", readsTrustedFiles},
    {"system", "finds its crash reports", findsCrashReports},
    {"system", "writes to the system's log", writesSystemLog},
    {"rights", "knows what an administrator may have done", knowsAdministratorsTools},
    {"rights", "obtains administrator rights", obtainsRights},
};

}  // namespace

Checks systemChecks() {
  return kChecks;
}

}  // namespace vantory
