#include "tasks/ui/WindowProgram.h"

#include <QApplication>
#include <cstdlib>
#include <exception>
#include <future>
#include <iostream>
#include <optional>
#include <string>

#include "backups/QWDataController.h"
#include "platform/Users.h"
#include "platform/qt/FontPreload.h"
#include "platform/qt/SystemColours.h"
#include "services/MainThread.h"
#include "services/Paths.h"
#include "services/QWException.h"
#include "services/QWLocalPaths.h"
#include "services/QWLog.h"
#include "services/QWUserDefaults.h"
#include "services/Runtime.h"
#include "services/Text.h"
#include "settings/QWBugReporter.h"
#include "tasks/HomeCheck.h"
#include "tasks/QWVantoryUtilities.h"
#include "tasks/ui/MainThreadEvents.h"
#include "tasks/ui/WindowSession.h"

namespace vantory {

namespace {

// Qt ends the process when it finds no display. Until the application stands, what it says on the way is left out.
void endWithoutDisplay(QtMsgType type, const QMessageLogContext&, const QString&) {
  if (type != QtFatalMsg) return;
  std::cerr << "Vantory: The window cannot be opened: there is no display. \"vantory --help\" lists the tasks that "
               "need none.\n";
  std::cerr.flush();
  std::_Exit(1);
}

// A process with the superuser's rights loads no toolkit on somebody else's behalf.
bool isSuperuserForSomebodyElse() {
  const Users& users = Runtime::current().platform().users;
  if (!users.isSuperuser()) return false;
  const auto user = users.consoleUser();
  return user && user->id != 0;
}

std::optional<std::string> reasonNotToOpen(const std::optional<std::string>& home) {
  if (isSuperuserForSomebodyElse())
    return "The window is not opened by the superuser for another user. Please start it as that user.";
  return reasonToRefuse(home, true);
}

void registerDefaults() {
  std::map<std::string, PropertyList> defaults = {{"periodicAutosave", 1},
                                                  {"autosaveFrequency", 7},
                                                  {"maxAutoBackups", 10},
                                                  {"sortedColumn", "name"},
                                                  {"sortedDescending", false}};
  if (const auto support = QWLocalPaths::appSupportDirectory(true))
    defaults.emplace("backupPath", paths::join(*support, "Quarrywell/Vantory/Backups"));
  QWUserDefaults::standardUserDefaults().registerDefaults(defaults);
}

void prepareApplication() {
  QApplication::setApplicationName(QStringLiteral("vantory"));
  QApplication::setApplicationDisplayName(QStringLiteral("Vantory"));
  QApplication::setApplicationVersion(QStringLiteral(VANTORY_VERSION));
  QApplication::setDesktopFileName(QStringLiteral("com.quarrywell.Vantory"));
}

void recordOrderlyEnd() {
  QWDataController::sharedController().saveAppSelections();
  if (const auto preferences = QWLocalPaths::prefsDirectory(true))
    QWBugReporter::stopBugReporter(paths::join(*preferences, "com.quarrywell.Vantory.plist"));
  QWLog::finishWriting();
}

int showWindow(const std::string& home) {
  MainThread& mainThread = MainThread::shared();
  const MainThreadEvents events(mainThread);
  Runtime& runtime = Runtime::current();
  runtime.guard = &runtime.shared<QWVantoryUtilities>();
  AppWindowController::startLog();
  registerDefaults();
  const SystemColours colours(nullptr);
  int exitCode = 0;
  {
    WindowSession session(home);
    session.open();
    exitCode = QApplication::exec();
  }
  recordOrderlyEnd();
  mainThread.shutDown();
  return exitCode;
}

}  // namespace

int runWindow(int& argumentCount, char** arguments, std::ostream& errors) {
  try {
    const auto home = QWLocalPaths::userDirectory();
    if (const auto reason = reasonNotToOpen(home)) {
      errors << "Vantory: " << printable(*reason) << '\n';
      return 1;
    }
    const std::string remark = remarkOnHome(*home);
    if (!remark.empty()) errors << "Vantory: " << remark << '\n';
    const QtMessageHandler usual = qInstallMessageHandler(endWithoutDisplay);
    const std::future<void> fonts = std::async(std::launch::async, &preloadFonts);
    QApplication application(argumentCount, arguments);
    fonts.wait();
    qInstallMessageHandler(usual);
    prepareApplication();
    return showWindow(*home);
  } catch (const std::exception& exception) {
    QWException::logException(exception, "runWindow");
  }
  return 1;
}

}  // namespace vantory
