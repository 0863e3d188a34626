// Finds the type of an extension, and declares those of projects.
#include "programs/vantory-desktop/FileTypes.h"

#include <gio/gio.h>

#include <cerrno>
#include <chrono>
#include <filesystem>
#include <optional>
#include <system_error>

#include "platform/linux/session/GLibPointers.h"
#include "platform/posix/files/Errors.h"
#include "platform/posix/processes/ChildProgram.h"
#include "platform/posix/processes/ProcessCalls.h"
#include "programs/vantory-desktop/ProjectTypes.h"
#include "programs/vantory-desktop/SessionEnvironment.h"
#include "programs/vantory-desktop/WholeFile.h"

namespace vantory::desktop {

namespace {

constexpr const char* kUpdateTool = "/usr/bin/update-mime-database";
constexpr std::chrono::seconds kUpdatePatience{20};
constexpr int kPublicFile = 0644;

// None when the database does not know the extension.
std::optional<std::string> knownType(const std::string& extension) {
  const std::string name = "project." + extension;
  const TextPointer type(g_content_type_guess(name.c_str(), nullptr, 0, nullptr));
  if (g_content_type_is_unknown(type.get())) return std::nullopt;
  return type.get();
}

// The text between two marks, the first of which is searched for from `from` on.
std::optional<std::string> between(std::string_view text, std::size_t from, std::string_view start, char end) {
  const std::size_t mark = text.find(start, from);
  if (mark == std::string_view::npos) return std::nullopt;
  const std::size_t begin = mark + start.size();
  return std::string(text.substr(begin, text.find(end, begin) - begin));
}

// The type that our declaration has for the extension: that of the element that holds the pattern.
std::optional<std::string> declaredType(const std::string& extension) {
  const std::size_t glob = kProjectTypes.find("pattern=\"*." + extension + "\"");
  if (glob == std::string_view::npos) return std::nullopt;
  return between(kProjectTypes, kProjectTypes.rfind("<mime-type ", glob), "type=\"", '"');
}

// The reverse.
std::optional<std::string> declaredExtension(const std::string& type) {
  const std::size_t element = kProjectTypes.find("type=\"" + type + "\"");
  if (element == std::string_view::npos) return std::nullopt;
  return between(kProjectTypes, element, "pattern=\"*.", '"');
}

Status updateDatabase(const std::string& folder) {
  const Result<pid_t> tool = startChild({.path = kUpdateTool, .arguments = {folder}, .environment = ownEnvironment()});
  if (!tool) return tool.error();
  const std::optional<int> code = waitForChild(*tool, kUpdatePatience);
  if (code == 0) return {};
  return systemError(kUpdateTool, code ? EIO : ETIMEDOUT);
}

// For this user, once: GIO notices some seconds later only.
Status declareProjects() {
  static bool declared = false;
  if (declared) return {};
  const std::string folder = std::string(g_get_user_data_dir()) + "/mime";
  std::error_code failure;
  std::filesystem::create_directories(folder + "/packages", failure);
  if (failure) return systemError(folder, failure.value());
  Status status = writeWhole(folder + "/packages/com.quarrywell.Vantory.xml", kProjectTypes, kPublicFile);
  if (status) status = updateDatabase(folder);
  declared = status.ok();
  return status;
}

}  // namespace

Result<std::string> typeOfExtension(const std::string& extension) {
  adoptSessionEnvironment();
  if (std::optional<std::string> type = knownType(extension)) return *type;
  if (std::optional<std::string> type = declaredType(extension)) return *type;
  return errorWithText(std::errc::no_such_file_or_directory, extension, "Files of this kind are not known.");
}

Status declareType(const std::string& type) {
  const std::optional<std::string> extension = declaredExtension(type);
  if (!extension || knownType(*extension)) return {};
  return declareProjects();
}

}  // namespace vantory::desktop
