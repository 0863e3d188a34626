// Refuses what could match more than an application's own files.
#include "catalog/definitions/PatternRules.h"

#include <algorithm>
#include <string_view>
#include <utility>

#include "base/Format.h"
#include "base/Paths.h"
#include "base/Text.h"
#include "catalog/definitions/OthersNames.h"
#include "catalog/definitions/Wildcards.h"
#include "services/QWLocalPaths.h"
#include "services/files/QWFileManager.h"
#include "services/files/RealPaths.h"

namespace vantory {

namespace {

constexpr std::size_t kLongestPattern = 1024;
constexpr std::ptrdiff_t kMostWildcards = 3;  // components with one
constexpr std::size_t kFixedCharacters = 4;

// Where applications keep their preferences.
constexpr std::string_view kPlaces[] = {"~/.config", "~/.local/share", "~/library/preferences",
                                        "~/library/application support"};
constexpr std::string_view kDocuments = "~/documents";

constexpr const char* kNoPreferences = "reaches a place where no application keeps its preferences";
constexpr const char* kNoFolder = "names what lies in no folder of an application";
constexpr const char* kPrograms = "reaches what starts programs";
constexpr const char* kSecrets = "is called after keys or passwords";

// Characters that are not seen, turn the text round, or belong to the letter before them.
constexpr std::pair<char32_t, char32_t> kDeceiving[] = {
    {0xa0, 0xa0},     {0xad, 0xad},     {0x300, 0x36f},   {0x61c, 0x61c},     {0x115f, 0x1160},   {0x1680, 0x1680},
    {0x180b, 0x180f}, {0x1ab0, 0x1aff}, {0x1dc0, 0x1dff}, {0x2000, 0x200f},   {0x2028, 0x202f},   {0x205f, 0x206f},
    {0x20d0, 0x20ff}, {0x3000, 0x3000}, {0x3164, 0x3164}, {0xfe00, 0xfe0f},   {0xfe20, 0xfe2f},   {0xfeff, 0xfeff},
    {0xffa0, 0xffa0}, {0xfff0, 0xffff}, {0xe000, 0xf8ff}, {0xe0000, 0xe0fff}, {0xf0000, 0x10ffff}};

bool startsWith(const std::vector<std::string>& pattern, const std::vector<std::string>& folder) {
  return pattern.size() > folder.size() && std::equal(folder.begin(), folder.end(), pattern.begin());
}

// What a component with a wildcard begins with, but for the dot of a hidden name and for the maker's part.
std::string_view fixedBeginning(std::string_view component) {
  std::string_view fixed = component.substr(0, component.find('*'));
  if (fixed.starts_with('.')) fixed.remove_prefix(1);
  return withoutDomain(fixed);
}

// Whether enough of it is fixed to be one application's.
bool isOwn(std::string_view component) {
  return component.find('*') == std::string_view::npos || fixedBeginning(component).size() >= kFixedCharacters;
}

std::string faultOfText(const std::string& pattern) {
  if (pattern.size() > kLongestPattern) return "is longer than 1024 bytes";
  if (holdsDeceivingCharacters(pattern)) return "holds characters that cannot be seen or stand apart from their letter";
  if (!isUtf8(pattern) || printable(pattern) != pattern) return "holds control characters or is no UTF-8";
  if (pattern.find_first_of("?[]$\\") != std::string::npos)
    return "holds a character that stands for others; only * may";
  if (pattern.find("**") != std::string::npos) return "holds two * in a row";
  if (pattern.ends_with('/')) return "ends with a slash";
  return "";
}

std::string faultOfComponents(const std::vector<std::string>& components) {
  for (const std::string& component : components)
    if (component.empty() || component == "." || component == "..") return "holds \".\", \"..\" or an empty component";
  for (const std::string& component : components)
    if (trimmed(component) != component) return "has a blank at an end of a component";
  if (std::ranges::count_if(components, QWFileManager::isWildcardPath) > kMostWildcards)
    return "has more than three components with *";
  return "";
}

// What an application has in a container of its own lies there as it would lie in the home; empty for all else.
std::vector<std::string> outsideContainer(const std::vector<std::string>& pattern, const std::string& identifier) {
  const auto joined = [&](std::vector<std::string> home, std::size_t from) {
    home.insert(home.end(), pattern.begin() + static_cast<std::ptrdiff_t>(from), pattern.end());
    return home;
  };
  const auto isIn = [&](std::string_view folder) { return startsWith(pattern, foldedComponents(folder)); };
  const std::string id = foldedForDisks(identifier);
  if (isIn("~/library/containers/" + id + "/data/library")) return joined({"~"}, 5);
  if (isIn("~/.var/app/" + id + "/config")) return joined({"~", ".config"}, 5);
  if (isIn("~/.var/app/" + id + "/data")) return joined({"~", ".local", "share"}, 5);
  if (isIn("~/.var/app/" + id)) return joined({"~"}, 4);
  return {};
}

// Of a component that is a name which nothing may have, or could match it.
std::string faultLike(const std::string& component, std::string_view name, const char* fault) {
  if (!QWFileManager::isWildcardPath(component)) return fault;
  return formatted("%@: \"%@\" could match \"%@\", so more characters must stand before its first *", fault, component,
                   name);
}

bool isPlainFolder(const std::string& path) {
  return QWFileManager::isDirectoryAtPath(path) && !QWFileManager::isPackageAtPath(path);
}

bool isHidden(const std::string& component) {
  return component.starts_with('.');
}

}  // namespace

bool holdsDeceivingCharacters(std::string_view text) {
  while (!text.empty()) {
    const std::size_t length = std::max<std::size_t>(utf8CharacterLength(text), 1);
    const char32_t character = codeOf(text.substr(0, length));
    if (std::ranges::any_of(kDeceiving,
                            [&](const auto& range) { return character >= range.first && character <= range.second; }))
      return true;
    text.remove_prefix(length);
  }
  return false;
}

PatternRules::PatternRules(const std::vector<std::string>& keptOut)
    : home_(QWLocalPaths::userDirectory()), shared_(QWLocalPaths::sharedUsersDirectory()) {
  // A "*" in a home's own path would be taken for a pattern.
  if (home_ && QWFileManager::isWildcardPath(*home_)) home_.reset();
  if (home_) realHome_ = QWFileManager::realPath(*home_);
  const auto keepOut = [this](const std::string& folder) {
    for (const std::string& way : {folder, QWFileManager::realPath(folder)})
      keptOut_.push_back(foldedComponents(written(way)));
  };
  for (const std::string& folder : keptOut) keepOut(folder);
  if (const auto trash = QWLocalPaths::trashDirectory()) keepOut(paths::parent(*trash));
}

// A path in the home as a pattern would say it.
std::string PatternRules::written(const std::string& path) const {
  for (const auto& home : {home_, realHome_})
    if (home && paths::isWithin(path, *home)) return "~" + path.substr(home->size());
  return path;
}

std::string PatternRules::faultOf(const std::string& pattern, const std::vector<std::string>& identifiers) const {
  if (std::string fault = faultOfText(pattern); !fault.empty()) return fault;
  const bool isShared = shared_ && pattern.starts_with(*shared_ + "/");
  if (!pattern.starts_with("~/") && !isShared) return "does not begin with \"~/\" or \"/Users/Shared/\"";
  const Components components = foldedComponents(pattern);
  if (std::string fault = faultOfComponents(components); !fault.empty()) return fault;
  if (std::string fault = faultOfPlace(components, isShared, identifiers); !fault.empty()) return fault;
  return std::ranges::any_of(components, holdsSecrets) ? kSecrets : "";
}

std::string PatternRules::faultOfPath(const std::string& path, const std::string& found,
                                      const std::vector<std::string>& identifiers, RealPaths& realPaths) const {
  if (std::string fault = faultOfMatch(path, found, identifiers, realPaths); !fault.empty()) return fault;
  const Components components = foldedComponents(written(path));
  if (isScript(components.back())) return kPrograms;
  return std::ranges::any_of(components, holdsSecrets) ? kSecrets : "";
}

// Folders may bear names that a person gave to projects and profiles.
std::string PatternRules::faultOfMatch(const std::string& path, const std::string& found,
                                       const std::vector<std::string>& identifiers, RealPaths& realPaths) const {
  const bool isShared = shared_ && path.starts_with(*shared_ + "/");
  // A star in a name stands for nothing here.
  std::string name = written(path);
  std::ranges::replace(name, '*', '_');
  if (!name.starts_with("~/") && !isShared) return kNoPreferences;
  if (printable(path) != path) return "has a name with control characters";
  // What a backup holds of a folder there would come back one level deeper.
  if (isShared && (isPlainFolder(path) || (found != path && isPlainFolder(found))))
    return "is a folder, of which none is looked after there";
  const Components components = foldedComponents(name);
  if (std::string fault = faultOfPlace(components, isShared, identifiers); !fault.empty()) return fault;
  if (isKeptOut(foldedComponents(written(realPaths.of(path))))) return kNoPreferences;
  return holdsSecrets(components.back()) ? kSecrets : "";
}

std::string PatternRules::faultOfPlace(Components pattern, bool isShared,
                                       const std::vector<std::string>& identifiers) const {
  if (isKeptOut(pattern)) return kNoPreferences;
  if (isShared) return faultOfShared(pattern);
  for (const std::string& identifier : identifiers)
    if (Components outside = outsideContainer(pattern, identifier); !outside.empty()) {
      if (!nameOfAnotherProgram(foldedForDisks(identifier)).empty()) return kNoPreferences;
      pattern = std::move(outside);
    }
  return faultInHome(pattern);
}

bool PatternRules::isKeptOut(const Components& pattern) const {
  return std::ranges::any_of(keptOut_, [&](const Components& folder) { return couldMeet(pattern, folder); });
}

// A folder in a backup lies elsewhere than a file there, so that its place cannot be told.
std::string PatternRules::faultOfShared(const Components& pattern) const {
  const std::size_t root = foldedComponents(*shared_).size();
  if (pattern.size() < root + 2) return kNoFolder;
  const std::string& name = pattern.back();
  const std::size_t ending = name.rfind('.');
  if (ending == std::string::npos || ending + 1 == name.size() || QWFileManager::isWildcardPath(name.substr(ending)))
    return "may name a folder: below \"/Users/Shared/\" files are named, with their ending";
  return faultOfNames(pattern, root);
}

std::string PatternRules::faultInHome(const Components& pattern) {
  for (const std::string_view place : kPlaces) {
    const Components folder = foldedComponents(place);
    if (startsWith(pattern, folder)) return faultOfNames(pattern, folder.size());
    if (pattern.size() <= folder.size() && couldMeet(pattern, folder))
      return "could match a folder that many applications share";
  }
  if (startsWith(pattern, foldedComponents(kDocuments))) return faultInDocuments(pattern);
  if (!isHidden(pattern[1])) return kNoPreferences;
  if (pattern.size() == 2) return kNoFolder;
  if (QWFileManager::isWildcardPath(pattern[1])) return "has a * in the name of a folder of the home";
  return faultOfNames(pattern, 1);
}

// The person's own, but that some makers keep something there.
std::string PatternRules::faultInDocuments(const Components& pattern) {
  constexpr std::size_t kFewest = 5;  // "~", "Documents", maker, application, file
  const std::string& name = pattern.back();
  const std::size_t ending = name.size() - std::min(name.size(), name.rfind('.'));
  const std::size_t fixed = fixedBeginning(name).size() + (QWFileManager::isWildcardPath(name) ? ending : 0);
  const bool isNamed = std::ranges::none_of(pattern, QWFileManager::isWildcardPath) || fixed >= kFixedCharacters;
  if (pattern.size() < kFewest || QWFileManager::isWildcardPath(pattern[2]) ||
      QWFileManager::isWildcardPath(pattern[3]) || !isNamed)
    return "could match what is the person's own: in ~/Documents the folders of a maker and an application must be "
           "named, and where there is a * four characters of the last name, its ending counted";
  return faultOfNames(pattern, 2);
}

// The components from the first on that are the application's own.
std::string PatternRules::faultOfNames(const Components& pattern, std::size_t first) {
  const std::string& own = pattern[first];
  if (!isOwn(own))
    return "could match what is another application's: at least four characters of its own must stand before the first "
           "*";
  if (const auto other = nameOfAnotherProgram(isHidden(own) ? own.substr(1) : own); !other.empty())
    return faultLike(own, other, kNoPreferences);
  if (isOfMaker(own) && pattern.size() == first + 1) return "is a folder that the applications of the same maker share";
  if (isOfMaker(own) && !isOwn(pattern[first + 1]))
    return "could match what another application of the same maker has: in the maker's folder, too, at least four "
           "characters must stand before the first *";
  for (std::size_t i = first; i < pattern.size(); ++i) {
    for (const auto folder :
         {folderOfPrograms(pattern[i]), i == first + 1 ? folderOfAdditions(pattern[i]) : std::string_view()})
      if (!folder.empty()) return faultLike(pattern[i], folder, kPrograms);
  }
  return isProgram(pattern.back()) ? kPrograms : "";
}

std::optional<std::string> PatternRules::resolve(const std::string& pattern) const {
  if (!pattern.starts_with("~/")) return pattern;
  if (!home_) return std::nullopt;
  return *home_ + pattern.substr(1);
}

}  // namespace vantory
