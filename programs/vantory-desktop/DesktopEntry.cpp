// Finds desktop entries in any case of letters, and reads them.
#include "programs/vantory-desktop/DesktopEntry.h"

#include <cerrno>
#include <filesystem>
#include <optional>
#include <string_view>
#include <system_error>

#include "base/Paths.h"
#include "platform/linux/session/DataFolders.h"
#include "platform/posix/files/Errors.h"
#include "platform/posix/files/SmallFiles.h"
#include "programs/vantory-desktop/SessionEnvironment.h"

namespace vantory::desktop {

namespace {

namespace fs = std::filesystem;

constexpr std::size_t kLargestEntry = 256 * 1024;
constexpr std::string_view kSuffix = ".desktop";
constexpr const char* kGroup = G_KEY_FILE_DESKTOP_GROUP;

bool isSameInAnyCase(const std::string& one, const std::string& other) {
  return g_ascii_strcasecmp(one.c_str(), other.c_str()) == 0;
}

std::optional<std::string> pathInAnyCase(const fs::path& folder, const std::string& name) {
  std::error_code failure;
  for (fs::directory_iterator entry(folder, failure), end; !failure && entry != end; entry.increment(failure))
    if (isSameInAnyCase(entry->path().filename(), name)) return entry->path();
  return std::nullopt;
}

// An exact name anywhere goes before another case in an earlier folder.
std::optional<std::string> entryPath(const std::string& name, Case names) {
  std::vector<std::string> folders;
  for (const std::string& folder : dataFolders(g_get_home_dir(), true)) folders.push_back(folder + "/applications");
  std::error_code ignored;
  for (const std::string& folder : folders)
    if (std::string path = paths::join(folder, name); fs::exists(path, ignored)) return path;
  if (names == Case::Exact) return std::nullopt;
  for (const std::string& folder : folders)
    if (std::optional<std::string> path = pathInAnyCase(folder, name)) return path;
  return std::nullopt;
}

// A placeholder alone or within a word stands for something that is not known yet.
bool takePlaceholders(std::string& word) {
  for (std::size_t at = word.find('%'); at != std::string::npos; at = word.find('%', at + 1)) {
    if (word.substr(at, 2) != "%%") return false;
    word.erase(at, 1);
  }
  return true;
}

}  // namespace

// A hidden entry counts as none: by one a user takes away an application of the system's.
Result<DesktopEntry> DesktopEntry::find(const std::string& identifier, Case names) {
  adoptSessionEnvironment();
  if (identifier.empty() || identifier.front() == '.' || identifier.find('/') != std::string::npos)
    return errorWithText(std::errc::invalid_argument, identifier, "This is no application's identifier.");
  const std::optional<std::string> path = entryPath(identifier + std::string(kSuffix), names);
  const Error missing = errorWithText(std::errc::no_such_file_or_directory, identifier,
                                      "No application of this identifier is installed.");
  if (!path) return missing;
  Result<DesktopEntry> entry = read(*path);
  if (entry && entry->isSet(G_KEY_FILE_DESKTOP_KEY_HIDDEN)) return missing;
  return entry;
}

Result<DesktopEntry> DesktopEntry::read(const std::string& path) {
  const Result<std::string> text = readSmallFile(path, kLargestEntry);
  if (!text) return text.error();
  KeyFilePointer keys(g_key_file_new());
  GError* error = nullptr;
  if (g_key_file_load_from_data(keys.get(), text->data(), text->size(), G_KEY_FILE_NONE, &error))
    return DesktopEntry(path, std::move(keys));
  const ErrorPointer owner(error);
  return errorWithText(std::errc::bad_message, path, error->message);
}

std::string DesktopEntry::identifier() const {
  const std::string name = fs::path(path_).filename();
  return name.substr(0, name.size() - kSuffix.size());
}

std::string DesktopEntry::text(const char* key) const {
  const TextPointer value(g_key_file_get_string(keys_.get(), kGroup, key, nullptr));
  return value ? value.get() : "";
}

bool DesktopEntry::isSet(const char* key) const {
  return g_key_file_get_boolean(keys_.get(), kGroup, key, nullptr) != FALSE;
}

std::vector<std::string> DesktopEntry::command() const {
  char** parsed = nullptr;
  if (!g_shell_parse_argv(text(G_KEY_FILE_DESKTOP_KEY_EXEC).c_str(), nullptr, &parsed, nullptr)) return {};
  const TextListPointer owner(parsed);
  std::vector<std::string> words;
  for (char** word = parsed; *word; ++word)
    if (std::string known = *word; takePlaceholders(known)) words.push_back(std::move(known));
  return words;
}

// GIO makes none of an entry whose program it does not find.
Result<ApplicationPointer> DesktopEntry::application() const {
  ApplicationPointer application(g_desktop_app_info_new_from_filename(path_.c_str()));
  if (application) return application;
  return errorWithText(std::errc::no_such_file_or_directory, path_, "The program that this names is not installed.");
}

}  // namespace vantory::desktop
