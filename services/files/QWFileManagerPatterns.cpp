// Expands patterns against the disk, one folder level at a time.
#include <algorithm>
#include <optional>

#include "base/Paths.h"
#include "base/Text.h"
#include "services/Runtime.h"
#include "services/TaskReport.h"
#include "services/files/QWFileManager.h"
#include "services/log/QWLog.h"

namespace vantory {

namespace {

using Paths = std::vector<std::string>;

// A byte that is no UTF-8 counts as a character.
std::size_t firstCharacterLength(std::string_view text) {
  return std::max<std::size_t>(utf8CharacterLength(text), 1);
}

// Whether the whole name matches: "*" stands for any run of characters, "?" for one. Only the last "*" passed is ever
// tried again, so the time is at most the product of both lengths.
bool matches(std::string_view name, std::string_view pattern) {
  std::optional<std::string_view> patternAfterStar;
  std::string_view nameAtStar;
  while (!name.empty()) {
    const char wanted = pattern.empty() ? '\0' : pattern.front();
    if (wanted == '*') {
      pattern.remove_prefix(1);
      patternAfterStar = pattern;
      nameAtStar = name;
    } else if (wanted == '?') {
      pattern.remove_prefix(1);
      name.remove_prefix(firstCharacterLength(name));
    } else if (!pattern.empty() && wanted == name.front()) {
      pattern.remove_prefix(1);
      name.remove_prefix(1);
    } else if (patternAfterStar) {
      nameAtStar.remove_prefix(firstCharacterLength(nameAtStar));
      name = nameAtStar;
      pattern = *patternAfterStar;
    } else {
      return false;
    }
  }
  return pattern.find_first_not_of('*') == std::string_view::npos;
}

// Its files are left out of whatever a task does, and that must not go unsaid. Nothing is told without a report.
void tellUnreadable(const std::string& folder, const Error& error, TaskReport* report) {
  if (!report || report->hasFailed(FileAction::List, folder)) return;
  QWLog::appendLog("The files in %@ cannot be listed: %@", folder, error.text);
  report->failed(FileAction::List, folder, error);
}

// The entries of all these folders whose names match, in the order that they are listed. A link to nothing is none.
Paths matchingEntries(const Paths& folders, std::string_view pattern, TaskReport* report) {
  Paths found;
  for (const std::string& folder : folders) {
    const auto entries = Runtime::current().platform().files.list(folder, Detail::Names);
    if (!entries) {
      if (!meansMissing(entries.error())) tellUnreadable(folder, entries.error(), report);
      continue;
    }
    for (const DirectoryEntry& entry : *entries) {
      if (!matches(entry.name, pattern)) continue;
      std::string path = paths::join(folder, entry.name);
      const bool surelyExists = entry.type == FileType::File || entry.type == FileType::Folder;
      if (surelyExists || QWFileManager::mayExistAtPath(path)) found.push_back(std::move(path));
    }
  }
  return found;
}

// What exists of the pattern below `start`, component by component.
Paths expand(const std::string& pattern, const std::string& start, TaskReport* report = nullptr) {
  Paths found = {start};
  // Of a run of literal components only the whole is looked for, and not even that before a folder is listed.
  bool untested = false;
  for (const std::string_view component : paths::components(pattern)) {
    if (component == "/") {
      // A trailing slash throws away what was matched.
      found = {start};
      untested = false;
    } else if (QWFileManager::isWildcardPath(component)) {
      found = matchingEntries(found, component, report);
      untested = false;
    } else {
      for (std::string& path : found) path = paths::join(path, component);
      untested = true;
    }
  }
  if (untested) std::erase_if(found, [](const std::string& path) { return !QWFileManager::mayExistAtPath(path); });
  return found;
}

Paths withoutOthers(Paths found) {
  std::erase_if(found, QWFileManager::isLeftToOthers);
  return found;
}

}  // namespace

bool QWFileManager::isWildcardPath(std::string_view path) {
  return path.find('*') != std::string_view::npos;
}

Paths QWFileManager::filesMatchingWildcardPath(const std::string& pattern) {
  return withoutOthers(isWildcardPath(pattern) ? expand(pattern, "/") : Paths{pattern});
}

Paths QWFileManager::filesMatchingWildcardPath(const std::string& pattern, const std::string& fromBasePath) {
  if (!isWildcardPath(pattern)) return {paths::join(fromBasePath, pattern)};
  return expand(pattern, fromBasePath);
}

Paths QWFileManager::filesMatchingWildcardPath(const std::string& pattern, TaskReport& report) {
  return withoutOthers(isWildcardPath(pattern) ? expand(pattern, "/", &report) : Paths{pattern});
}

Paths QWFileManager::filesMatchingWildcardPath(const std::string& pattern, const std::string& fromBasePath,
                                               TaskReport& report) {
  if (!isWildcardPath(pattern)) return {paths::join(fromBasePath, pattern)};
  return expand(pattern, fromBasePath, &report);
}

std::string QWFileManager::decodeWildcardPath(const std::string& pattern, const std::string& fromBasePath) {
  const Paths found = filesMatchingWildcardPath(pattern, fromBasePath);
  return found.empty() ? paths::join(fromBasePath, pattern) : found.front();
}

}  // namespace vantory
