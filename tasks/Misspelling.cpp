// Compares what was typed with the tasks and options.
#include "tasks/Misspelling.h"

#include <algorithm>

#include "base/Format.h"
#include "base/Paths.h"
#include "base/Spelling.h"
#include "platform/SystemInfo.h"
#include "services/Runtime.h"
#include "services/files/QWFileManager.h"
#include "tasks/Question.h"
#include "tasks/TaskCommand.h"
#include "tasks/TaskOptions.h"

namespace vantory {

namespace {

// The window's toolkit takes these, and a session manager starts the window again with the first.
constexpr std::string_view kToolkitOptions[] = {
    "session",    "platform",        "style",         "stylesheet",     "display",           "geometry",
    "name",       "title",           "reverse",       "widgetcount",    "qwindowicon",       "qwindowtitle",
    "fontengine", "qwindowgeometry", "platformtheme", "nocolorpalette", "platformpluginpath"};

// Every word that begins a line, as it is written.
std::vector<std::string> knownOptions() {
  std::vector<std::string> options;
  for (const TaskCommand& command : commandTable()) options.emplace_back(command.option);
  for (const Question& question : questionTable()) options.emplace_back(question.option);
  for (const std::string_view other : {"--help", "--version"}) options.emplace_back(other);
  return options;
}

// Tasks have one dash, questions two, and people neither.
std::string withoutDashes(const std::string& word) {
  return word.substr(std::min(word.find_first_not_of('-'), word.size()));
}

// The option that comes nearest, however many dashes were typed.
std::optional<std::string> nearestOption(const std::string& word) {
  const std::vector<std::string> options = knownOptions();
  std::vector<std::string> names;
  names.reserve(options.size());
  for (const std::string& option : options) names.push_back(withoutDashes(option));
  const auto name = nearestWord(withoutDashes(word), names);
  if (!name) return std::nullopt;
  return options[static_cast<std::size_t>(std::ranges::find(names, *name) - names.begin())];
}

// However many dashes were typed, and whatever it is to be set to.
bool isToolkitOption(const std::string& word) {
  const std::string name = withoutDashes(word);
  // A process serial number, by which a Mac's launcher names the program it has started.
  if (word.starts_with("-psn_")) return true;
  return word.starts_with('-') && std::ranges::count(kToolkitOptions, name.substr(0, name.find('='))) > 0;
}

// Whether a shell takes the word as it stands.
bool needsNoQuotes(const std::string& word) {
  constexpr std::string_view kPlain = "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789_-./,=";
  return !word.empty() && word.find_first_not_of(kPlain) == std::string::npos;
}

bool isFile(const std::string& word) {
  return QWFileManager::fileExistsAtPath(
      paths::absolute(word, Runtime::current().platform().system.workingDirectory()));
}

}  // namespace

// A word without a dash may be a file: only what is close to an option is taken for one.
std::optional<std::string> whatWasMeant(const std::vector<std::string>& arguments) {
  std::size_t first = 1;
  while (first < arguments.size() && isTaskOption(arguments[first])) ++first;
  if (first > 1 && first == arguments.size()) return formatted("After \"%@\" a task is missing.", arguments[1]);
  if (first == arguments.size() || arguments[first] == "--" || isToolkitOption(arguments[first]) ||
      isFile(arguments[first]))
    return std::nullopt;
  const std::string& word = arguments[first];
  const auto nearest = nearestOption(word);
  if (!nearest) {
    if (!word.starts_with('-')) return std::nullopt;
    return formatted("There is no option \"%@\".", word);
  }
  std::string meant = *nearest;
  const bool isPlain =
      std::all_of(arguments.begin() + static_cast<std::ptrdiff_t>(first) + 1, arguments.end(), needsNoQuotes);
  for (std::size_t i = first + 1; i < arguments.size() && isPlain; ++i) meant.append(" ").append(arguments[i]);
  return formatted(word.starts_with('-') ? "There is no option \"%@\": did you mean \"vantory %@%@\"?"
                                         : "There is no file \"%@\" here: did you mean \"vantory %@%@\"?",
                   word, meant, isPlain ? "" : " ...");
}

}  // namespace vantory
