// Starts the toolkit, meets other copies, runs the loop.
#include "window/application/WindowProgram.h"

#include <QApplication>
#include <QSocketNotifier>
#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <exception>
#include <future>
#include <iostream>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "base/Text.h"
#include "platform/Clock.h"
#include "platform/FileSystem.h"
#include "platform/SingleInstance.h"
#include "platform/SystemInfo.h"
#include "platform/TerminationSignals.h"
#include "platform/Users.h"
#include "services/QWLocalPaths.h"
#include "services/Runtime.h"
#include "services/log/QWException.h"
#include "services/log/QWLog.h"
#include "services/threads/MainThread.h"
#include "settings/QWBugReporter.h"
#include "tasks/HomeCheck.h"
#include "tasks/QWVantoryUtilities.h"
#include "tasks/ui/DocumentPaths.h"
#include "window/appearance/FontPreload.h"
#include "window/appearance/SystemColours.h"
#include "window/application/MainThreadEvents.h"
#include "window/application/WindowSession.h"

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

// As for a task that works on the library.
std::optional<std::string> reasonNotToOpen(const std::optional<std::string>& home) {
  if (isSuperuserForSomebodyElse())
    return "The window is not opened by the superuser for another user. Please start it as that user.";
  return reasonToRefuse(home, true);
}

// The session decides whether the program ends with its last window.
void prepareApplication() {
  QApplication::setApplicationName(QStringLiteral("vantory"));
  QApplication::setApplicationDisplayName(QStringLiteral("Vantory"));
  QApplication::setApplicationVersion(QStringLiteral(VANTORY_VERSION));
  QApplication::setDesktopFileName(QStringLiteral("com.quarrywell.Vantory"));
  QApplication::setQuitOnLastWindowClosed(false);
}

// The files among the arguments that the toolkit has left; the person is told of those that are not there.
std::vector<std::string> existingFiles(int argumentCount, char** arguments, std::ostream& errors) {
  const Platform& platform = Runtime::current().platform();
  std::vector<std::string> files =
      documentPaths({arguments + 1, arguments + argumentCount}, platform.system.workingDirectory());
  std::erase_if(files, [&](const std::string& file) {
    const bool isMissing = !platform.files.info(file, Links::Follow);
    if (isMissing) errors << "Vantory: There is no file " << printable(file) << ".\n";
    return isMissing;
  });
  return files;
}

// True when the copy that shows its window does what is asked. Otherwise this copy does; with a window it hears from
// now on what later ones ask.
bool isDoneByOther(SingleInstance& instance, const OpenRequest& request, const SingleInstance::Receiver& receive) {
  if (WindowSession::onlyHandsOn(request.files)) return false;
  if (!WindowSession::needsWindow(request.files)) return instance.handOver(request) == SingleInstance::HandOver::Taken;
  constexpr int kAttempts = 20;
  for (int attempt = 0; attempt < kAttempts; ++attempt) {
    if (instance.listen(receive)) return false;
    const auto outcome = instance.handOver(request);
    if (outcome != SingleInstance::HandOver::Nobody) return outcome == SingleInstance::HandOver::Taken;
    // It is about to listen, or about to end.
    Runtime::current().platform().clock.sleep(std::chrono::milliseconds(10));
  }
  return false;
}

// Requests are served by the session, so they end before it.
class Listening {
 public:
  Listening(SingleInstance& instance, WindowSession*& session, WindowSession& served) : instance_(instance) {
    session = &served;
  }
  ~Listening() { instance_.stopListening(); }
  Listening(const Listening&) = delete;
  Listening& operator=(const Listening&) = delete;

 private:
  SingleInstance& instance_;
};

// While it exists, a signal that ends the program is met between two events.
class EndBySignal {
 public:
  explicit EndBySignal(TerminationSignals& termination) : termination_(termination) {
    const int descriptor = termination.startReporting();
    if (descriptor < 0) return;
    notifier_.emplace(descriptor, QSocketNotifier::Read);
    QObject::connect(&*notifier_, &QSocketNotifier::activated, &*notifier_, [this] {
      notifier_->setEnabled(false);
      QCoreApplication::exit();
    });
  }
  ~EndBySignal() {
    notifier_.reset();
    termination_.stopReporting();
  }
  EndBySignal(const EndBySignal&) = delete;
  EndBySignal& operator=(const EndBySignal&) = delete;

 private:
  TerminationSignals& termination_;
  std::optional<QSocketNotifier> notifier_;
};

// Waits for the first paint, when the notice has a window to stand on.
struct CrashNotice : BugReporterDelegate {
  void applicationDidCrashWithLog(const std::string& log) override {
    session->whenPainted([log] { QWBugReporter::showCrashNotice(log); });
  }

  WindowSession* session = nullptr;  // made before the first event is served
};

// The fonts are there when `fonts` is ready.
int showWindow(const std::string& home, const std::vector<std::string>& files, SingleInstance& instance,
               TerminationSignals& termination, WindowSession*& receiver, const std::future<void>& fonts) {
  Runtime& runtime = Runtime::current();
  runtime.guard = &runtime.shared<QWVantoryUtilities>();
  CrashNotice notice;
  // Without a window to show it over, the next start tells of a crash.
  if (!WindowSession::onlyHandsOn(files))
    AppWindowController::startLog(WindowSession::needsWindow(files) ? &notice : nullptr);
  const SystemColours colours(nullptr);
  int exitCode = 0;
  {
    fonts.wait();
    WindowSession session(home);
    notice.session = &session;
    const Listening listening(instance, receiver, session);
    QObject::connect(qApp, &QGuiApplication::lastWindowClosed, &session.window(), [&session] {
      if (session.quitsWithLastWindow()) QCoreApplication::exit();
    });
    const EndBySignal endBySignal(termination);
    if (session.open(files)) exitCode = QApplication::exec();
  }
  QWLog::finishWriting();
  MainThread::shared().shutDown();
  return exitCode;
}

}  // namespace

int runWindow(int& argumentCount, char** arguments, SingleInstance& instance, TerminationSignals& termination,
              std::ostream& errors) {
  try {
    const auto home = QWLocalPaths::userDirectory();
    if (const auto reason = reasonNotToOpen(home)) {
      errors << "Vantory: " << printable(*reason) << '\n';
      return 1;
    }
    const std::string remark = remarkOnHome(*home);
    if (!remark.empty()) errors << "Vantory: " << remark << '\n';
    // Read first: the toolkit may take it out of the environment.
    const std::string activationToken = qgetenv("XDG_ACTIVATION_TOKEN").toStdString();
    const QtMessageHandler usual = qInstallMessageHandler(endWithoutDisplay);
    // The lists of fonts are read while the toolkit starts.
    const std::future<void> fonts = std::async(std::launch::async, &preloadFonts);
    QApplication application(argumentCount, arguments);
    qInstallMessageHandler(usual);
    prepareApplication();
    const OpenRequest request{existingFiles(argumentCount, arguments, errors), activationToken};
    MainThread& mainThread = MainThread::shared();
    const MainThreadEvents events(mainThread);
    WindowSession* receiver = nullptr;  // made before the first event is served
    const auto receive = [&mainThread, &receiver](OpenRequest later) {
      mainThread.post([&receiver, later = std::move(later)] { receiver->receive(later); });
    };
    if (isDoneByOther(instance, request, receive)) return 0;
    return showWindow(*home, request.files, instance, termination, receiver, fonts);
  } catch (const std::exception& exception) {
    QWException::logException(exception, "runWindow");
  }
  return 1;
}

}  // namespace vantory
