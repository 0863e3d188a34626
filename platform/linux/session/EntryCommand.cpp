// Takes the command of a desktop entry apart, and compares it with processes.
#include "platform/linux/session/EntryCommand.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <filesystem>
#include <optional>
#include <sstream>
#include <string_view>
#include <system_error>

#include "base/Paths.h"
#include "platform/linux/session/ProcessView.h"
#include "platform/posix/files/Descriptor.h"

namespace vantory {

namespace {

namespace fs = std::filesystem;

using Words = std::vector<std::string>;

constexpr std::array<std::string_view, 9> kSharedPrograms = {"sh",      "bash", "dash",    "zsh", "fish",
                                                             "busybox", "env",  "flatpak", "snap"};
constexpr std::array<std::string_view, 9> kSharedPrefixes = {"python", "perl", "ruby",     "node", "java",
                                                             "wine",   "mono", "electron", "bwrap"};

// Interpreters and launchers, which run many applications.
bool isShared(const std::string& program) {
  const std::string name = fs::path(program).filename();
  return std::find(kSharedPrograms.begin(), kSharedPrograms.end(), name) != kSharedPrograms.end() ||
         std::any_of(kSharedPrefixes.begin(), kSharedPrefixes.end(),
                     [&](std::string_view prefix) { return name.starts_with(prefix); });
}

// With all links resolved as far as the path exists; empty when that fails.
std::string resolved(const fs::path& path) {
  std::error_code failure;
  const fs::path result = fs::weakly_canonical(path, failure);
  return failure ? std::string() : result.native();
}

// Where the program lies, or would lie when it has been removed meanwhile.
std::string located(const std::string& program, const std::string& searchPath) {
  if (program.starts_with('/')) return resolved(program);
  if (program.empty() || program.find('/') != std::string::npos) return {};
  std::istringstream folders(searchPath);
  for (std::string folder; std::getline(folders, folder, ':');) {
    const std::string path = paths::join(folder, program);
    if (folder.starts_with('/') && access(path.c_str(), X_OK) == 0) return resolved(path);
  }
  return {};
}

bool isAssignment(const std::string& word) {
  return word.find('=') != std::string::npos && !word.starts_with('-');
}

bool isEnvironmentTool(const std::string& word) {
  return fs::path(word).filename() == "env";
}

// Drops "env", its options and its assignments.
void dropEnvironment(Words& words) {
  if (words.empty() || !isEnvironmentTool(words.front())) return;
  auto word = words.begin() + 1;
  while (word != words.end() && (isAssignment(*word) || word->starts_with('-'))) {
    const bool takesAnother = *word == "-u" || *word == "-C";
    word += takesAnother && word + 1 != words.end() ? 2 : 1;
  }
  words.erase(words.begin(), word);
}

// The words behind "#!"; none when the file is no script.
Words interpreterOf(const std::string& program) {
  const Descriptor file(open(program.c_str(), O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC));
  struct stat status {};
  if (!file.valid() || fstat(file.get(), &status) != 0 || !S_ISREG(status.st_mode)) return {};
  char beginning[256];
  const ssize_t count = uninterrupted([&] { return read(file.get(), beginning, sizeof beginning); });
  std::string_view line(beginning, count > 0 ? static_cast<std::size_t>(count) : 0);
  if (!line.starts_with("#!")) return {};
  line = line.substr(2, line.find('\n') - 2);
  std::istringstream text{std::string(line)};
  Words words;
  for (std::string word; text >> word;) words.push_back(word);
  return words;
}

bool isOption(const std::string& word) {
  return word.starts_with('-');
}

// An operand that is a path may be given in another way.
bool isSame(const std::string& wanted, const std::string& given, const ProcessView& process) {
  if (wanted == given) return true;
  return wanted.starts_with('/') && !given.empty() && resolved(fs::path(process.workingFolder()) / given) == wanted;
}

}  // namespace

// The kernel shows a script as its interpreter.
EntryCommand::EntryCommand(Words words, const std::string& searchPath) {
  dropEnvironment(words);
  if (words.empty()) return;
  name_ = paths::lastComponent(words.front());
  program_ = located(words.front(), searchPath);
  words.front() = program_;
  Words interpreter = program_.empty() ? Words() : interpreterOf(program_);
  dropEnvironment(interpreter);
  if (!interpreter.empty()) {
    name_ = paths::lastComponent(interpreter.front());
    program_ = located(interpreter.front(), searchPath);
    words.insert(words.begin(), program_);
  }
  for (auto word = words.begin() + 1; word != words.end(); ++word) {
    if (!isOption(*word))
      operands_.push_back(*word);
    else if (word->find('=') != std::string::npos)
      settings_.push_back(*word);
  }
}

// Without operands a shared program could be anybody's.
bool EntryCommand::isRunBy(const ProcessView& process) const {
  if (program_.empty() || (operands_.empty() && isShared(program_))) return false;
  if (!process.runs(program_) && !wasStarted(process)) return false;
  if (operands_.empty() && settings_.empty()) return true;
  return operandsMatch(process, process.arguments());
}

// The file that it was started from may bear another name by now, with another one in its place.
bool EntryCommand::wasStarted(const ProcessView& process) const {
  const Words words = process.arguments();
  const std::string given = words.empty() ? "" : words.front();
  const std::string name = paths::lastComponent(given);
  if (name != name_ && name != paths::lastComponent(program_)) return false;
  if (given.starts_with('/')) return resolved(given) == program_;
  return paths::parent(process.program()) == paths::parent(program_);
}

// Options come and go with how an application is started; those with a value may choose what it is.
bool EntryCommand::operandsMatch(const ProcessView& process, const Words& arguments) const {
  auto wanted = operands_.begin();
  for (std::size_t i = 1; i < arguments.size() && wanted != operands_.end(); ++i) {
    if (isOption(arguments[i])) continue;
    if (!isSame(*wanted, arguments[i], process)) return false;
    ++wanted;
  }
  return wanted == operands_.end() && std::all_of(settings_.begin(), settings_.end(), [&](const std::string& setting) {
           return std::find(arguments.begin(), arguments.end(), setting) != arguments.end();
         });
}

}  // namespace vantory
