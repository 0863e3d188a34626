// Finds the newest copy of the updater and starts it.
#include "settings/QWSoftwareUpdate.h"

#include <charconv>
#include <optional>

#include "base/Paths.h"
#include "base/PropertyListBytes.h"
#include "platform/FileSystem.h"
#include "platform/SystemInfo.h"
#include "platform/Workspace.h"
#include "services/GlobalSettings.h"
#include "services/QWLocalPaths.h"
#include "services/Runtime.h"
#include "services/files/QWFileManager.h"
#include "services/log/QWLog.h"
#include "services/threads/BackgroundThreads.h"

namespace vantory {

namespace {

constexpr const char* kUpdater = "Quarrywell Software Update.app";

Platform& platform() {
  return Runtime::current().platform();
}

// What an application says of itself.
std::optional<std::string> bundleText(const std::string& application, const std::string& key) {
  const auto bytes = platform().files.read(paths::join(application, "Contents/Info.plist"));
  const auto content = bytes ? parsePropertyList(*bytes) : std::nullopt;
  const PropertyListDictionary* values = content ? content->asDictionary() : nullptr;
  const PropertyList* value = values ? values->find(key) : nullptr;
  return value ? textOf(*value) : std::nullopt;
}

// The number that its version begins with; 0 for none, so that a missing copy is the oldest.
long long versionOf(const std::string& application) {
  const std::string text = bundleText(application, "CFBundleVersion").value_or("");
  long long version = 0;
  std::from_chars(text.data(), text.data() + text.size(), version);
  return version;
}

// None where it could not be made; then the installed one has to do.
std::optional<std::string> temporaryCopy(const std::string& application) {
  const auto folder = QWLocalPaths::tempDirectory();
  if (!folder) return std::nullopt;
  const std::string copy = paths::join(*folder, kUpdater);
  if (!QWFileManager::removeFile(copy, false) || !QWFileManager::copyFile(application, copy, false))
    return std::nullopt;
  return copy;
}

}  // namespace

// The program's own copy counts only where it is newer than the installed one.
std::string QWSoftwareUpdate::updaterPath() {
  const auto applications = QWLocalPaths::applicationDirectory(false);
  std::string installed = paths::join(applications.value_or(""), std::string("Quarrywell/") + kUpdater);
  const std::string inner = platform().system.resourcePath(kUpdater);
  if (versionOf(installed) >= versionOf(inner)) return installed;
  return temporaryCopy(inner).value_or(installed);
}

void QWSoftwareUpdate::launchSoftwareUpdate() {
  const std::string path = updaterPath();
  if (!QWFileManager::fileExistsAtPath(path)) {
    QWLog::appendLog("Unable to launch Software Update - path doesn't exist");
    return;
  }
  const Status launched = platform().workspace.launchApplication(bundleText(path, "CFBundleIdentifier").value_or(""));
  if (!launched) QWLog::appendLog("Unable to launch Software Update: %@", launched.error().text);
}

void QWSoftwareUpdate::startup() {
  const auto setting = globalSetting("SUCheckAtStartup");
  const bool* check = setting ? setting->asBoolean() : nullptr;
  if (check && *check) BackgroundThreads::shared().start(automaticallyCheckForUpdates);
}

void QWSoftwareUpdate::manualUpdateCheck() {
  launchSoftwareUpdate();
}

// The application itself tells whether there is anything new.
void QWSoftwareUpdate::automaticallyCheckForUpdates() {
  launchSoftwareUpdate();
}

}  // namespace vantory
