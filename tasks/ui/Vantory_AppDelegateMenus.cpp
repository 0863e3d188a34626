// What the program and Help menus do.

#include <optional>

#include "backups/ui/Controls.h"
#include "platform/Documents.h"
#include "platform/FileSystem.h"
#include "platform/SystemInfo.h"
#include "platform/Workspace.h"
#include "services/Runtime.h"
#include "services/log/QWLog.h"
#include "services/messages/QWAlert.h"
#include "services/threads/BackgroundThreads.h"
#include "settings/QWTroubleshootingUtils.h"
#include "tasks/ui/Vantory_AppDelegate.h"
#include "tasks/ui/WebPages.h"

namespace vantory {

namespace {

constexpr const char* kName = "Vantory";
constexpr const char* kUpdater = "com.quarrywell.SoftwareUpdate";
constexpr const char* kUpdaterInside = "Quarrywell Software Update.app";
constexpr const char* kUserManual = "Vantory User Manual.pdf";

Platform& platform() {
  return Runtime::current().platform();
}

// A file that comes with the program; none when it is missing.
std::optional<std::string> resource(const char* name) {
  std::string path = platform().system.resourcePath(name);
  if (!platform().files.info(path, Links::Follow)) return std::nullopt;
  return path;
}

// A browser may take a while to start.
void open(const std::string& pathOrAddress) {
  BackgroundThreads::shared().start([pathOrAddress] {
    const Status opened = platform().documents.open(pathOrAddress);
    if (opened) return;
    QWLog::appendLog("Unable to open %@: %@", pathOrAddress, opened.error().text);
    QWAlert::alertSheetWithMessageText("No application could be found to open this", pathOrAddress);
  });
}

// Asks the desktop, or packs files.
void runWithName(void (*tool)(const std::string& application)) {
  BackgroundThreads::shared().start([tool] { tool(kName); });
}

}  // namespace

void Vantory_AppDelegate::showPreferences() {
  QWLog::appendLog("Showing preference window...");
  parts_.openPreferences();
}

void Vantory_AppDelegate::disablePrefsMenu() {
  parts_.menuPrefs.setEnabled(false);
}

void Vantory_AppDelegate::enablePrefsMenu() {
  parts_.menuPrefs.setEnabled(true);
}

void Vantory_AppDelegate::gatherLogs() {
  runWithName([](const std::string& name) { QWTroubleshootingUtils::gatherLogsForAppWithName(name); });
}

void Vantory_AppDelegate::viewTaskLog() {
  runWithName(&QWTroubleshootingUtils::viewTaskLogForApp);
}

void Vantory_AppDelegate::viewLog() {
  runWithName(&QWTroubleshootingUtils::viewLogForApp);
}

// The installed updater, or else the one that came with the program.
void Vantory_AppDelegate::menuSoftwareUpdate() {
  BackgroundThreads::shared().start([] {
    if (!platform().workspace.applicationPath(kUpdater)) {
      if (const auto inside = resource(kUpdaterInside)) open(*inside);
      return;
    }
    if (const Status started = platform().workspace.launchApplication(kUpdater); !started) {
      QWLog::appendLog("Unable to start %@: %@", kUpdater, started.error().text);
      QWAlert::alertSheetWithMessageText("The updater could not be started", started.error().text);
    }
  });
}

void Vantory_AppDelegate::helpReportBug() {
  open(pages::bugReport(VANTORY_VERSION));
}

void Vantory_AppDelegate::helpSuggestFeature() {
  open(pages::featureRequest());
}

void Vantory_AppDelegate::helpQWHome() {
  open(pages::kMaker);
}

void Vantory_AppDelegate::helpGearwrightHome() {
  open(pages::kMaintenanceTools);
}

void Vantory_AppDelegate::helpVantoryHome() {
  open(pages::kProgram);
}

void Vantory_AppDelegate::helpUserManual() {
  if (const auto manual = resource(kUserManual)) open(*manual);
}

bool Vantory_AppDelegate::hasSoftwareUpdate() {
  return platform().workspace.applicationPath(kUpdater) || resource(kUpdaterInside);
}

bool Vantory_AppDelegate::hasUserManual() {
  return resource(kUserManual).has_value();
}

}  // namespace vantory
