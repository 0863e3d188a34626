// Other programs: started, ended, and the system's tools on what the program makes and copies.
#include "selfcheck/PlatformChecks.h"

#include <algorithm>
#include <vector>

#include "platform/FileMetadata.h"
#include "platform/FileSystem.h"
#include "platform/Processes.h"
#include "platform/SystemTools.h"

namespace vantory {

namespace {

struct Ended {
  int code = 0;
  std::string output;
};

// A tool that is not installed was not tried.
Ended runTool(const Bench& bench, Trial& trial, const ToolCall& call) {
  if (!bench.platform.metadata.isExecutable(call.tool)) {
    trial.passesOver("there is no " + call.tool);
    return {};
  }
  auto process = bench.platform.processes.start(call.tool, call.arguments, Streams::Captured);
  trial.does(process);
  if (!process) return {};
  Process::Output output = (*process)->readAll();
  return {(*process)->wait(), std::move(output.output)};
}

Finding startsPrograms(const Bench& bench) {
  Trial trial(bench);
  const Ended ended = runTool(bench, trial, {"/bin/sh", {"-c", "echo \"$0\"; exit 3", "a  word"}});
  trial.sees(ended.output == "a  word\n", "its argument or output is lost");
  trial.sees(ended.code == 3, "its exit code is told wrongly");
  trial.sees(!bench.platform.processes.start(bench.path("missing"), {}, Streams::Discarded).ok(),
             "a program that is missing was started");
  return trial.finding();
}

Finding endsPrograms(const Bench& bench) {
  Trial trial(bench);
  auto process = bench.platform.processes.start("/bin/sleep", {"20"}, Streams::Discarded);
  trial.does(process);
  if (!process) return trial.finding();
  trial.sees((*process)->isRunning(), "a program that runs passes for one that has ended");
  (*process)->terminate();
  constexpr int kTerminated = 128 + 15;
  trial.sees((*process)->wait() == kTerminated, "it goes on to its end");
  return trial.finding();
}

Finding packs(const Bench& bench) {
  Trial trial(bench);
  const std::string archive = bench.path("packed.zip");
  const ToolCall zip = bench.platform.tools.zip(trial.put("packed", "text"), archive);
  const Ended ended = runTool(bench, trial, zip);
  trial.sees(ended.code == 0, zip.tool + " failed");
  trial.sees(bench.contentOf(archive).starts_with("PK\x03\x04"), "it makes no archive");
  return trial.finding("by " + zip.tool);
}

Finding copiesLinks(const Bench& bench) {
  Trial trial(bench);
  trial.does(bench.platform.files.makeFolder(bench.path("folder")));
  runTool(bench, trial, {"/bin/ln", {"-s", "nowhere", bench.path("folder/link")}});
  auto staged = bench.platform.files.stageCopy({bench.path("folder"), bench.path("copy")});
  trial.does(staged);
  if (staged) trial.does((*staged)->commit(StagedCopy::Existing::Keep));
  const Result<std::string> target = bench.platform.metadata.linkTarget(bench.path("copy/link"));
  trial.does(target);
  trial.sees(target && *target == "nowhere", "the link leads elsewhere");
  staged = bench.platform.files.stageCopy(
      {.source = bench.path("link/file"), .destination = bench.path("other"), .sourceRoot = bench.folder});
  trial.sees(!staged, "a way through a link was taken");
  return trial.finding();
}

// What one tool gives a file, and another shows of it.
struct Attachment {
  ToolCall give;  // the file is its last argument
  ToolCall show;
  std::string_view mark;  // what is shown of a file that has it
  bool staysWhenReplaced = false;
};

// The first whose tools the machine has.
Finding keepsAttachment(const Bench& bench, const std::vector<Attachment>& attachments) {
  Trial trial(bench);
  const auto on = [](ToolCall call, const std::string& file) {
    call.arguments.push_back(file);
    return call;
  };
  const auto isThere = [&](const Attachment& each) { return bench.platform.metadata.isExecutable(each.give.tool); };
  const auto found = std::find_if(attachments.begin(), attachments.end(), isThere);
  if (found == attachments.end()) return {Outcome::NotTried, "there is no tool that sets it"};
  const std::string file = trial.put("attached", "text"), copy = bench.path("copy");
  const auto shows = [&](const std::string& path) {
    return runTool(bench, trial, on(found->show, path)).output.find(found->mark) != std::string::npos;
  };
  if (runTool(bench, trial, on(found->give, file)).code != 0 || !shows(file))
    trial.passesOver(found->give.tool + " cannot set it on this volume");
  auto staged = bench.platform.files.stageCopy({file, copy});
  trial.does(staged);
  if (staged) trial.does((*staged)->commit(StagedCopy::Existing::Keep));
  trial.sees(shows(copy), "a copy does not have it");
  trial.does(bench.platform.files.write(file, "new", {}));
  trial.sees(!found->staysWhenReplaced || shows(file), "a file that is replaced loses it");
  return trial.finding("by " + found->give.tool);
}

Finding keepsAccessLists(const Bench& bench) {
  return keepsAttachment(
      bench,
      {{{"/usr/bin/setfacl", {"-m", "u:0:r"}}, {"/usr/bin/getfacl", {"-cp", "--numeric"}}, "user:0:r", true},
       {{"/bin/chmod", {"+a", "everyone allow readattr"}}, {"/bin/ls", {"-le"}}, "everyone allow readattr", true}});
}

Finding keepsResourceForks(const Bench& bench) {
  return keepsAttachment(bench, {{{"/usr/bin/xattr", {"-w", "com.apple.ResourceFork", "fork"}},
                                  {"/usr/bin/xattr", {"-p", "com.apple.ResourceFork"}},
                                  "fork"}});
}

// By a file in the scratch folder, of which the system keeps as much in memory as of the user's.
Finding settingsAreRead(const Bench& bench) {
  Trial trial(bench);
  const std::string file = trial.put("com.quarrywell.Check.plist",
                                     "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<plist version=\"1.0\"><dict>"
                                     "<key>check</key><string>read</string></dict></plist>\n");
  const Ended ended = runTool(bench, trial, {"/usr/bin/defaults", {"read", file, "check"}});
  trial.sees(ended.output == "read\n", "it reads something else");
  return trial.finding();
}

constexpr Check kChecks[] = {
    {"programs", "starts a program, and hears what it says", startsPrograms},
    {"programs", "ends a program", endsPrograms},
    {"programs", "packs an archive", packs},
    {"copies", "keeps links in folders, and follows none", copiesLinks},
    {"copies", "keeps access lists", keepsAccessLists},
    {"copies", "keeps resource forks", keepsResourceForks},
    {"programs", "has the system's own settings tool read a file", settingsAreRead},
};

}  // namespace

Checks toolChecks() {
  return kChecks;
}

}  // namespace vantory
