// How late the window is for its own events while it backs up 3,000 files, and while "cp -a" copies them beside it.

#include <QApplication>
#include <QElapsedTimer>
#include <QProcess>
#include <QPushButton>
#include <QTimer>
#include <algorithm>
#include <cstdio>
#include <functional>
#include <string>

#include "backups/QWDataController.h"
#include "bench/SampleFiles.h"
#include "bench/SideBySide.h"
#include "platform/linux/LinuxPlatform.h"
#include "services/Runtime.h"
#include "services/threads/BackgroundThreads.h"
#include "services/threads/MainThread.h"
#include "window/application/MainThreadEvents.h"
#include "window/application/WindowSession.h"
#include "window/controls/Command.h"

using namespace vantory;
using namespace vantory::bench;

namespace {

constexpr int kTick = 10;  // milliseconds
constexpr int kRounds = 5;

void serveUntil(const std::function<bool()>& done) {
  QTimer wakeUp;  // what ends elsewhere brings no event
  wakeUp.start(kTick);
  while (!done()) QApplication::processEvents(QEventLoop::WaitForMoreEvents);
}

// The longest delay of a timer's tick, in milliseconds, from the beginning of the work until it is done.
double longestDelay(const std::function<void()>& begin, const std::function<bool()>& done) {
  QElapsedTimer sinceTick;
  double longest = 0;
  QTimer timer;
  timer.setTimerType(Qt::PreciseTimer);
  QObject::connect(&timer, &QTimer::timeout, [&] {
    longest = std::max(longest, static_cast<double>(sinceTick.nsecsElapsed()) / 1e6 - kTick);
    sinceTick.restart();
  });
  sinceTick.start();
  timer.start(kTick);
  begin();
  serveUntil(done);
  return longest;
}

void confirmDialog(const std::string& name) {
  for (QWidget* widget : QApplication::topLevelWidgets())
    if (auto* dialog = dynamic_cast<BackupDialog*>(widget); dialog && dialog->isVisible()) {
      dialog->setName(name);
      for (QPushButton* button : dialog->findChildren<QPushButton*>())
        if (button->isDefault()) button->click();
    }
}

double delayDuringBackup(MainWindow& window, const std::string& name) {
  return longestDelay(
      [&] {
        window.backupPane().backupCommand().trigger();
        confirmDialog(name);
      },
      [] { return !BackgroundThreads::shared().isWorking(); });
}

double delayDuringCopy(const std::string& source, const std::string& target) {
  QProcess copying;
  return longestDelay(
      [&] {
        copying.start("cp", {"-a", QString::fromStdString(source), QString::fromStdString(target)});
      },
      [&] { return copying.state() == QProcess::NotRunning; });
}

}  // namespace

int main(int argumentCount, char** arguments) {
  ScratchHomes homes;
  const std::string home = homes.create();
  const std::string files = makeButtonBars(home, 3000);
  qputenv("HOME", home.c_str());
  if (!qEnvironmentVariableIsSet("DISPLAY")) qputenv("QT_QPA_PLATFORM", "offscreen");
  QApplication application(argumentCount, arguments);
  LinuxPlatform platform({"vantory"}, "vantory");
  Runtime runtime(platform.platform());
  const MainThreadEvents events(runtime.shared<MainThread>());
  AppWindowController::startLog(nullptr);
  WindowSession session(home);
  if (!session.open()) return 1;
  serveUntil([] {
    return !QWDataController::sharedController().backupArray().empty() && !BackgroundThreads::shared().isWorking();
  });

  double ours = 0, peer = 0;
  for (int round = 0; round < kRounds; ++round) {
    ours = std::max(ours, delayDuringBackup(session.window(), "Backup " + std::to_string(round)));
    peer = std::max(peer, delayDuringCopy(files, home + "/copy " + std::to_string(round)));
  }
  if (entriesIn(backupPath(home, "Backup 0")) == 0 || entriesIn(home + "/copy 0") == 0) return 1;
  std::printf("window late, backup of 3,000 files: ours %.1f ms, beside cp %.1f ms, difference %.1f (goal 100)\n", ours,
              peer, ours - peer);
}
