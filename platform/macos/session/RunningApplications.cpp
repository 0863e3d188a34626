// Reads the description of each bundle that a process was started from.
#include "platform/macos/session/RunningApplications.h"

#include <algorithm>
#include <cctype>
#include <map>
#include <optional>
#include <string_view>

#include "base/Paths.h"
#include "base/PropertyListBytes.h"
#include "platform/macos/darwin/Darwin.h"
#include "platform/posix/files/Errors.h"

namespace vantory {

namespace {

constexpr std::string_view kPrograms = ".app/Contents/MacOS/";

// What a bundle says of itself.
struct Description {
  std::string identifier;
  std::string program;  // its main one, by its name
};

std::string textUnder(const PropertyListDictionary& dictionary, std::string_view key) {
  const PropertyList* value = dictionary.find(key);
  return value ? textOf(*value).value_or("") : "";
}

std::optional<Description> describe(const FileSystem& files, const std::string& bundle) {
  const Result<std::string> bytes = files.read(bundle + "/Contents/Info.plist");
  const auto list = bytes ? parsePropertyList(*bytes) : std::nullopt;
  const PropertyListDictionary* dictionary = list ? list->asDictionary() : nullptr;
  if (!dictionary) return std::nullopt;
  return Description{textUnder(*dictionary, "CFBundleIdentifier"), textUnder(*dictionary, "CFBundleExecutable")};
}

// Small letters and digits only, to compare "Final Cut Pro.app" with "FinalCut".
std::string condensed(std::string_view text) {
  std::string letters;
  for (const char c : text)
    if (std::isalnum(static_cast<unsigned char>(c)) != 0)
      letters += static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  return letters;
}

bool isCalledLike(const std::string& bundle, const std::string& bundleIdentifier) {
  const std::string name = condensed(paths::withoutExtension(paths::lastComponent(bundle)));
  const std::string wanted = condensed(bundleIdentifier.substr(bundleIdentifier.rfind('.') + 1));
  return !name.empty() && !wanted.empty() &&
         (name.find(wanted) != std::string::npos || wanted.find(name) != std::string::npos);
}

}  // namespace

// The innermost bundle counts: applications hold others. Each is read once.
Result<std::vector<pid_t>> runningCopies(const FileSystem& files, uid_t user, const std::string& bundleIdentifier) {
  std::map<std::string, std::optional<Description>> bundles;
  std::vector<pid_t> copies;
  std::string doubtful;
  for (const darwin::RunningProgram& running : darwin::programsOf(user)) {
    const std::size_t position = running.path.rfind(kPrograms);
    if (position == std::string::npos) continue;
    const std::string bundle = running.path.substr(0, position + 4);
    const auto [known, isNew] = bundles.try_emplace(bundle);
    if (isNew) known->second = describe(files, bundle);
    const std::optional<Description>& found = known->second;
    const std::string program = running.path.substr(position + kPrograms.size());
    if (!found && isCalledLike(bundle, bundleIdentifier)) doubtful = bundle;
    if (found && found->identifier == bundleIdentifier && (found->program.empty() || found->program == program))
      copies.push_back(running.process);
  }
  if (copies.empty() && !doubtful.empty())
    return errorWithText(std::errc::io_error, doubtful, "runs, and cannot be read: it may be " + bundleIdentifier);
  return copies;
}

}  // namespace vantory
