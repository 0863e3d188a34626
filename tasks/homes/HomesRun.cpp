// Hands the homes out one after the other, and tells what came of each.
#include "tasks/homes/HomesRun.h"

#include <algorithm>
#include <istream>
#include <ostream>
#include <set>
#include <sstream>
#include <thread>
#include <utility>
#include <vector>

#include "base/ExitCodes.h"
#include "base/Json.h"
#include "base/Paths.h"
#include "base/Text.h"
#include "base/TextTable.h"
#include "platform/HomeWorkers.h"
#include "services/TaskReport.h"
#include "tasks/Program.h"
#include "tasks/Question.h"
#include "tasks/Refusal.h"
#include "tasks/TaskCommand.h"
#include "tasks/TaskOptions.h"
#include "tasks/homes/HomeOptions.h"

namespace vantory {

namespace {

// Line ends in JSON lie between its parts only, never within a text.
std::string onOneLine(const std::string& json) {
  std::string line;
  bool isIndent = false;
  for (const char character : json) {
    isIndent = character == '\n' || (isIndent && character == ' ');
    if (!isIndent) line += character;
  }
  return line;
}

// What the home's process printed stands in it as it is.
std::string jsonLine(const HomeResult& result, const std::string& run) {
  PropertyListDictionary fields;
  fields.append("home", result.home);
  fields.append("owner", result.owner);
  fields.append("exitCode", result.exitCode);
  if (result.counts) {
    fields.append("done", result.counts->done);
    fields.append("skipped", result.counts->skipped);
    fields.append("failed", result.counts->failed);
  }
  fields.append("why", printable(result.why));
  if (!run.empty()) fields.append("run", run);
  std::string line = onOneLine(writeJson(std::move(fields)));
  if (!result.output.empty()) line.insert(line.size() - 1, ",\"report\": " + onOneLine(result.output));
  return line;
}

class HomesRun {
 public:
  struct Identity {
    std::string name;
    bool canBeTakenBack;
  };
  HomesRun(HomeWorkers& workers, const HomesStreams& streams, bool inJson, Identity identity)
      : workers_(workers), streams_(streams), inJson_(inJson), identity_(std::move(identity)) {}

  // The folders above others could not be listed.
  int run(const std::vector<std::string>& homes, const std::vector<HomeResult>& unlisted, std::size_t jobs) {
    all_ = homes.size() + unlisted.size();
    for (const HomeResult& each : unlisted) take(each);
    auto home = homes.begin();
    for (std::size_t running = 0; running > 0 || (home != homes.end() && !endsEarly_);) {
      for (; running < jobs && home != homes.end() && !endsEarly_; ++home) running += begin(*home);
      if (running == 0) continue;
      if (auto result = workers_.next()) {
        --running;
        take(*result);
      } else {
        endsEarly_ = true;
      }
    }
    const auto left = homes.end() - home;
    for (; home != homes.end(); ++home) take({.home = *home, .owner = {}, .exitCode = kNotBegun, .why = "Not begun."});
    if (!inJson_) streams_.output << table();
    if (endsEarly_) streams_.errors << "Vantory: Ended early: " << left << " of " << all_ << " homes were not begun.\n";
    if (streams_.progress && hasDoneAnything_ && identity_.canBeTakenBack)
      *streams_.progress << "To take this back: the same homes with --undo " << identity_.name << '\n';
    if (streams_.output.flush()) return exitCode();
    streams_.errors << "Vantory: The output could not be written.\n";
    return kNotBegun;
  }

 private:
  std::size_t begin(const std::string& home) {
    streams_.output.flush();  // a copy of the process must have nothing to print
    const Status status = workers_.start(home);
    if (status.ok()) return 1;
    take({.home = home, .owner = {}, .exitCode = kNotBegun, .why = status.error().text});
    return 0;
  }

  void take(const HomeResult& result) {
    hasDoneAnything_ |= result.counts && result.counts->done > 0;
    ++ended_;
    // A folder in which nobody can work, such as "lost+found", says nothing about the others.
    if (result.exitCode != kNothingMatched || !result.owner.empty()) exitCodes_.insert(result.exitCode);
    if (inJson_) {
      streams_.output << jsonLine(result, identity_.canBeTakenBack ? identity_.name : "") << '\n' << std::flush;
      return;
    }
    if (!result.output.empty()) streams_.output << printable(result.home) << ":\n" << result.output << '\n';
    rows_.push_back(row(result));
    if (streams_.progress) *streams_.progress << progressLine(result) << '\n';
  }

  static std::string number(const HomeResult& result, std::size_t HomeResult::Counts::*count) {
    return result.counts ? std::to_string(*result.counts.*count) : "-";
  }

  // One endless text would push all others off the screen.
  static std::string cut(const std::string& text, std::size_t longest) {
    return text.size() <= longest ? text : std::string(shortened(text, longest)) + "...";
  }
  static std::string shownHome(const HomeResult& result) { return cut(result.home, 120); }
  static std::string shownReason(const HomeResult& result) { return cut(result.why, 300); }

  static TextTable::Row row(const HomeResult& result) {
    return {shownHome(result),
            result.owner.empty() ? "-" : result.owner,
            number(result, &HomeResult::Counts::done),
            number(result, &HomeResult::Counts::skipped),
            number(result, &HomeResult::Counts::failed),
            shownReason(result)};
  }

  std::string table() {
    std::ranges::sort(rows_);
    TextTable table({"HOME", "OWNER", "DONE", "SKIPPED", "FAILED", "WHY"});
    for (TextTable::Row& each : rows_) table.add(std::move(each));
    return table.text();
  }

  std::string progressLine(const HomeResult& result) const {
    std::string line = std::to_string(ended_) + "/" + std::to_string(all_) + " " + shownHome(result) + ": ";
    if (result.exitCode != 0) return printable(line + shownReason(result));
    line += result.counts ? number(result, &HomeResult::Counts::done) + " done" : "done";
    return printable(result.why.empty() ? line : line + ". " + shownReason(result));
  }

  // What was nothing to one home, while there was something to do in others, is no fault.
  int exitCode() const {
    const auto all = [&](int code) { return exitCodes_.size() == 1 && exitCodes_.contains(code); };
    if (exitCodes_.empty()) return kNothingMatched;
    if (all(kNotBegun) || all(kNothingMatched)) return *exitCodes_.begin();
    const bool isWhole = std::ranges::all_of(exitCodes_, [](int code) { return code == 0 || code == kNothingMatched; });
    return isWhole ? 0 : kDoneInPart;
  }

  HomeWorkers& workers_;
  const HomesStreams& streams_;
  const bool inJson_;
  const Identity identity_;
  std::size_t all_ = 0;
  std::size_t ended_ = 0;
  bool endsEarly_ = false;
  bool hasDoneAnything_ = false;
  std::set<int> exitCodes_;
  std::vector<TextTable::Row> rows_;
};

// What was taken back is done again by its own name, and what was removed is gone.
bool canBeTakenBack(const std::vector<std::string>& arguments) {
  const auto task = beginsWithQuestion(arguments) ? std::nullopt : chooseCommand(arguments);
  const auto deed = task ? task->command->deed : std::nullopt;
  return deed && deed != FileAction::PutBack && deed != FileAction::Remove;
}

// Each once, in the order in which they are named.
class HomeList {
 public:
  HomeList(HomeWorkers& workers, std::string folder) : workers_(workers), folder_(std::move(folder)) {}

  // Fails for what was typed wrongly. A folder that cannot be listed, as on a dead file system, holds up none of the
  // others.
  Status add(const std::string& pattern) {
    const std::string path = paths::absolute(pattern, folder_);
    const auto homes = workers_.homesMatching(path);
    if (homes) {
      for (const std::string& home : *homes) addHome(home);
      return {};
    }
    if (meansMissing(homes.error()) || homes.error().code == std::errc::invalid_argument) return homes.error();
    unlisted_.push_back({.home = path, .owner = {}, .exitCode = kNotBegun, .why = homes.error().text});
    return {};
  }
  // Every line is a path as it stands, but for the carriage return of other systems, or many with a zero byte behind
  // each.
  void addLines(std::istream& input) {
    for (std::string line; std::getline(input, line);) {
      if (line.ends_with('\r')) line.pop_back();
      for (const std::string& path : split(line, '\0'))
        if (!path.empty()) addHome(paths::absolute(path, folder_));
    }
  }
  const std::vector<HomeResult>& unlisted() const { return unlisted_; }
  const std::vector<std::string>& homes() const { return homes_; }

 private:
  void addHome(const std::string& home) {
    if (known_.insert(home).second) homes_.push_back(home);
  }

  HomeWorkers& workers_;
  const std::string folder_;
  std::set<std::string> known_;
  std::vector<std::string> homes_;
  std::vector<HomeResult> unlisted_;  // by their patterns
};

}  // namespace

int runHomes(const HomeOptions& options, const std::string& name, const std::string& folder, HomeWorkers& workers,
             const HomesStreams& streams) {
  const bool inJson = std::ranges::count(options.arguments, kJson) > 0;
  const auto refuse = [&](const std::string& reason) {
    std::ostringstream output;
    const int code = refuseLine(reason, options.arguments, output, streams.errors);
    if (inJson) streams.output << onOneLine(output.str()) << '\n';
    return code;
  };
  if (std::ranges::count(options.arguments, kPrint0) > 0)
    return refuse("--print0 does not go with --homes: whose names would they be? \"--json\" tells.");
  if (!chooseCommand(options.arguments) && !beginsWithQuestion(options.arguments))
    return refuse("Behind the homes a task or a question is missing. See \"vantory --help\".");
  if (const auto fault = faultInOptions(options.arguments)) return refuse(*fault);
  HomeList list(workers, folder);
  for (const std::string& pattern : options.patterns) {
    if (pattern == "-")
      list.addLines(streams.input);
    else if (const Status status = list.add(pattern); !status.ok())
      return refuse(status.error().text);
  }
  if (list.homes().empty() && list.unlisted().empty()) return refuse("There is no such home.");
  const std::size_t jobs = options.jobs.value_or(std::max(1U, std::thread::hardware_concurrency()));
  return HomesRun(workers, streams, inJson, {name, canBeTakenBack(options.arguments)})
      .run(list.homes(), list.unlisted(), jobs);
}

}  // namespace vantory
