// Refuses what could match more than an application's own files.
#include "catalog/definitions/PatternRules.h"

#include <algorithm>
#include <string_view>

#include "base/Paths.h"
#include "base/Text.h"
#include "services/QWLocalPaths.h"
#include "services/files/QWFileManager.h"

namespace vantory {

namespace {

constexpr std::size_t kLongestPattern = 1024;
constexpr std::ptrdiff_t kMostWildcards = 3;  // components with one
constexpr std::size_t kFixedCharacters = 4;

// Each holds the files of many applications, or of the person: no item is one of them, or a folder above.
constexpr std::string_view kSharedFolders[] = {"~/.config",
                                               "~/.local",
                                               "~/.local/share",
                                               "~/.var",
                                               "~/.var/app",
                                               "~/snap",
                                               "~/Library",
                                               "~/Library/Preferences",
                                               "~/Library/Application Support",
                                               "~/Library/Containers",
                                               "~/Library/Group Containers",
                                               "~/Documents",
                                               "~/Desktop",
                                               "~/Downloads",
                                               "~/Movies",
                                               "~/Music",
                                               "~/Pictures",
                                               "~/Public",
                                               "~/Templates",
                                               "~/Videos"};

// Caches, what has been thrown away, secrets, what starts programs, and what is this program's own.
constexpr std::string_view kKeptOut[] = {"~/.cache",
                                         "~/Library/Caches",
                                         "~/.local/state",
                                         "~/.Trash",
                                         "~/.local/share/Trash",
                                         "~/.ssh",
                                         "~/.gnupg",
                                         "~/.pki",
                                         "~/.aws",
                                         "~/.kube",
                                         "~/.docker",
                                         "~/.password-store",
                                         "~/.mozilla",
                                         "~/.thunderbird",
                                         "~/.local/share/keyrings",
                                         "~/.local/share/kwalletd",
                                         "~/Library/Keychains",
                                         "~/bin",
                                         "~/.local/bin",
                                         "~/.local/lib",
                                         "~/.local/share/applications",
                                         "~/.local/share/dbus-1",
                                         "~/.local/share/systemd",
                                         "~/.config/systemd",
                                         "~/.config/environment.d",
                                         "~/.config/autostart",
                                         "~/.config/autostart-scripts",
                                         "~/.config/plasma-workspace",
                                         "~/.config/fish",
                                         "~/.config/git",
                                         "~/Library/LaunchAgents",
                                         "~/Library/LaunchDaemons",
                                         "~/Library/Services",
                                         "~/Library/Scripts",
                                         "~/Library/Application Support/Quarrywell",
                                         "~/Library/Logs",
                                         "~/Library/Preferences/com.quarrywell.Vantory.plist"};

// "*" stands for any run of characters. Letters of either case are alike: they are on a Mac's disk. Only the last "*"
// passed is ever tried again.
bool couldMatch(std::string_view component, std::string_view name) {
  std::optional<std::string_view> afterStar;
  std::string_view nameAtStar;
  while (!name.empty()) {
    if (component.starts_with('*')) {
      component.remove_prefix(1);
      afterStar = component;
      nameAtStar = name;
    } else if (!component.empty() && compareIgnoringCase(component.substr(0, 1), name.substr(0, 1)) == 0) {
      component.remove_prefix(1);
      name.remove_prefix(1);
    } else if (afterStar) {
      nameAtStar.remove_prefix(1);
      name = nameAtStar;
      component = *afterStar;
    } else {
      return false;
    }
  }
  return component.find_first_not_of('*') == std::string_view::npos;
}

// Whether all components that both have could be the same: then one is the other, or lies inside it.
bool couldMeet(const std::vector<std::string>& pattern, const std::vector<std::string>& folder) {
  for (std::size_t i = 0; i < std::min(pattern.size(), folder.size()); ++i)
    if (!couldMatch(pattern[i], folder[i])) return false;
  return true;
}

// What a component with a wildcard begins with, but for the dot of a hidden name and for the maker's part of a name
// such as "com.apple.motion.plist", which many applications have in common.
std::string_view fixedBeginning(std::string_view component) {
  std::string_view fixed = component.substr(0, component.find('*'));
  if (fixed.starts_with('.')) fixed.remove_prefix(1);
  const std::size_t domain = fixed.find('.');
  const bool hasMaker = domain >= 2 && domain <= 3 && lowerCased(fixed.substr(0, domain)) == fixed.substr(0, domain);
  if (!hasMaker) return fixed;
  const std::size_t maker = fixed.find('.', domain + 1);
  return maker == std::string_view::npos ? std::string_view() : fixed.substr(maker + 1);
}

std::string faultOfText(const std::string& pattern) {
  if (pattern.size() > kLongestPattern) return "is longer than 1024 bytes";
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
  if (std::ranges::count_if(components, QWFileManager::isWildcardPath) > kMostWildcards)
    return "has more than three components with *";
  return "";
}

// The root's slash parts nothing.
std::vector<std::string> componentsOf(std::string_view pattern) {
  return split(pattern.substr(pattern.starts_with('/') ? 1 : 0), '/');
}

}  // namespace

PatternRules::PatternRules(const std::vector<std::string>& keptOut)
    : home_(QWLocalPaths::userDirectory()), shared_(QWLocalPaths::sharedUsersDirectory()) {
  // A "*" in a home's own path would be taken for a pattern.
  if (home_ && QWFileManager::isWildcardPath(*home_)) home_.reset();
  roots_.push_back({"~"});
  if (shared_) roots_.push_back(componentsOf(*shared_));
  for (const std::string_view folder : kSharedFolders) sharedFolders_.push_back(componentsOf(folder));
  for (const std::string_view folder : kKeptOut) keptOut_.push_back(componentsOf(folder));
  for (const std::string& folder : keptOut) keptOut_.push_back(componentsOf(written(folder)));
  if (const auto trash = QWLocalPaths::trashDirectory())
    keptOut_.push_back(componentsOf(written(paths::parent(*trash))));
}

// A path in the home as a pattern would say it.
std::string PatternRules::written(const std::string& path) const {
  if (!home_ || !paths::isWithin(path, *home_)) return path;
  return "~" + path.substr(home_->size());
}

std::string PatternRules::faultOf(const std::string& pattern) const {
  if (std::string fault = faultOfText(pattern); !fault.empty()) return fault;
  const bool isShared = shared_ && pattern.starts_with(*shared_ + "/");
  if (!pattern.starts_with("~/") && !isShared) return "does not begin with \"~/\" or \"/Users/Shared/\"";
  const Components components = componentsOf(pattern);
  if (std::string fault = faultOfComponents(components); !fault.empty()) return fault;
  if (std::string fault = faultOfPlace(components); !fault.empty()) return fault;
  if (isKeptOut(components)) return "reaches a place where no application keeps its preferences";
  return "";
}

bool PatternRules::isKeptOut(const Components& pattern) const {
  return std::ranges::any_of(keptOut_, [&](const Components& folder) { return couldMeet(pattern, folder); });
}

std::string PatternRules::faultOfPlace(const Components& pattern) const {
  for (const auto* folders : {&sharedFolders_, &roots_})
    for (const Components& folder : *folders)
      if (std::string fault = faultOfFolder(pattern, folder); !fault.empty()) return fault;
  for (const Components& root : roots_)
    if (couldMeet(pattern, root) && pattern.size() == root.size() + 1)
      return "names what lies in no folder of an application";
  return "";
}

std::string PatternRules::faultOfFolder(const Components& pattern, const Components& folder) const {
  if (!couldMeet(pattern, folder)) return "";
  if (pattern.size() <= folder.size()) return "could match a folder that many applications share";
  const std::string& next = pattern[folder.size()];
  if (!QWFileManager::isWildcardPath(next) || fixedBeginning(next).size() >= kFixedCharacters) return "";
  return "could match what is another application's: at least four characters of its own must stand before the first *";
}

std::optional<std::string> PatternRules::resolve(const std::string& pattern) const {
  if (!pattern.starts_with("~/")) return pattern;
  if (!home_) return std::nullopt;
  return *home_ + pattern.substr(1);
}

}  // namespace vantory
