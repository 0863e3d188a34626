#include "platform/linux/session/ApplicationUnits.h"

#include <algorithm>
#include <charconv>

namespace vantory {

namespace {

constexpr std::string_view kScope = ".scope";
constexpr std::string_view kService = ".service";
constexpr std::string_view kUserManager = "user@";
constexpr std::size_t kUuidLength = 36;

// Takes the text up to the separator, and the separator, off the front of `rest`.
std::string_view takeUntil(std::string_view& rest, char separator) {
  const std::size_t end = std::min(rest.find(separator), rest.size());
  const std::string_view part = rest.substr(0, end);
  rest.remove_prefix(std::min(end + 1, rest.size()));
  return part;
}

bool removeSuffix(std::string_view& text, std::string_view suffix) {
  if (!text.ends_with(suffix)) return false;
  text.remove_suffix(suffix.size());
  return true;
}

// The user's own service manager is a service itself; the units it made lie below it.
std::string_view unitInPath(std::string_view path) {
  std::string_view unit;
  while (!path.empty()) {
    const std::string_view part = takeUntil(path, '/');
    const bool isManager = part.starts_with(kUserManager) && part.ends_with(kService);
    if (isManager)
      unit = {};
    else if (unit.empty() && (part.ends_with(kScope) || part.ends_with(kService)))
      unit = part;
  }
  return unit;
}

// With each "\xHH" as the byte it stands for.
std::string unescaped(std::string_view text) {
  std::string result;
  for (std::size_t i = 0; i < text.size(); ++i) {
    unsigned byte = 0;
    const std::string_view digits = text.substr(i).starts_with("\\x") ? text.substr(i + 2, 2) : "";
    const char* end = digits.data() + digits.size();
    if (digits.size() == 2 && std::from_chars(digits.data(), end, byte, 16).ptr == end) {
      result += static_cast<char>(byte);
      i += 3;
    } else {
      result += text[i];
    }
  }
  return result;
}

bool isUuid(std::string_view text) {
  return text.size() == kUuidLength && text.find_first_not_of("0123456789abcdef-") == std::string_view::npos;
}

}  // namespace

std::string unitOfProcess(std::string_view controlGroups) {
  while (!controlGroups.empty()) {
    std::string_view path = takeUntil(controlGroups, '\n');
    takeUntil(path, ':');
    const std::string_view controllers = takeUntil(path, ':');
    if (!controllers.empty() && controllers != "name=systemd") continue;
    if (const std::string_view unit = unitInPath(path); !unit.empty()) return std::string(unit);
  }
  return {};
}

// Dashes within an id are escaped, so that the last dash stands before it.
bool isUnitOfApplication(std::string_view unit, std::string_view identifier) {
  if (!unit.starts_with("app-")) return false;
  if (removeSuffix(unit, kService))
    unit = unit.substr(0, unit.find('@'));
  else if (removeSuffix(unit, kScope))
    unit = unit.substr(0, unit.rfind('-'));
  else
    return false;
  const std::size_t dash = unit.rfind('-');
  return dash != std::string_view::npos && unescaped(unit.substr(dash + 1)) == identifier;
}

// "snap.INSTANCE.APP.service", "snap.INSTANCE.APP.UUID.scope" or "snap.INSTANCE.APP-UUID.scope"
bool isUnitOfSnap(std::string_view unit, std::string_view snapApplication) {
  if (snapApplication.empty() || !unit.starts_with("snap.")) return false;
  unit.remove_prefix(std::string_view("snap.").size());
  if (!unit.starts_with(snapApplication)) return false;
  unit.remove_prefix(snapApplication.size());
  if (unit == kService) return true;
  if (!removeSuffix(unit, kScope) || (!unit.starts_with('.') && !unit.starts_with('-'))) return false;
  return isUuid(unit.substr(1));
}

}  // namespace vantory
