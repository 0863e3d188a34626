// The user's applications: real programs, declared in folders of the test's own.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <csignal>
#include <filesystem>
#include <sstream>

#include "platform/linux/helpers/DesktopHelper.h"
#include "platform/linux/session/DesktopSession.h"
#include "platform/linux/session/LinuxDesktop.h"
#include "tests/support/DesktopFolders.h"
#include "tests/support/FakePlatform.h"
#include "tests/support/SessionBus.h"

namespace vantory::test {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

namespace fs = std::filesystem;

// Its own in each process: a test that asks all copies to quit must not reach those of another.
const std::string kNumber = std::to_string(getpid());
const std::string kEd = "org.example.Ed" + kNumber;
constexpr const char* kPython = "/usr/bin/python3";
const std::vector<std::string> kWait = {"-f", "/dev/null"};

class WorkspaceTest : public ::testing::Test {
 protected:
  WorkspaceTest() { users_.process = User{getuid(), getgid(), desktop_.home()}; }

  void TearDown() override {
    for (const pid_t number : launched_) kill(number, SIGKILL);
  }

  int copies(const std::string& identifier = kEd) {
    const Result<Message> answer = helper_->ask({"count-copies", identifier}, std::chrono::seconds(10));
    return answer ? std::stoi(answer->front()) : -1;
  }
  // A program that writes down how it was started and then waits.
  std::string recorder() {
    const std::string waiting = desktop_.program("bin/waiting");
    return desktop_.script("bin/recorder",
                           "#!/bin/sh\n"
                           "echo \"$$ $PWD $(readlink /proc/$$/fd/1) $*\" > $HOME/new\n"
                           "mv $HOME/new $HOME/started\nexec " +
                               waiting + " -f /dev/null\n");
  }
  struct Start {
    pid_t process = 0;
    std::string folder, output, arguments;
  };
  // What the recorder wrote down, once it has.
  Start started() {
    Start start;
    if (!soon([this] { return exists(desktop_ / "started"); })) return start;
    std::istringstream text(readFile(desktop_ / "started"));
    text >> start.process >> start.folder >> start.output >> std::ws;
    std::getline(text, start.arguments);
    if (start.process > 0) launched_.push_back(start.process);
    return start;
  }

  DesktopFolders desktop_;
  FakeUsers users_;
  std::optional<DesktopHelper> helper_{std::in_place, [this] { return desktopHelperProgram(users_); }};
  LinuxWorkspace workspace_{*helper_, users_};
  std::vector<pid_t> launched_;
};

TEST_F(WorkspaceTest, FindsAProgramStartedFromATerminalByItsEntry) {
  const std::string program = desktop_.program("my bin/ed");
  fs::create_symlink(program, desktop_ / "bin/ed");
  desktop_.declare(kEd, "env -u NOTHING A=1 \"" + program + "\" --fresh %F");
  desktop_.declare("org.example.ByPath", "ed %U");
  desktop_.declare(kEd + "2", desktop_.program("bin/ed2"));
  const Running first(desktop_ / "bin/ed", kWait);
  const Running second(program, kWait);
  EXPECT_EQ(copies(), 2);
  EXPECT_EQ(copies("org.example.ByPath"), 2);
  for (const std::string& other : {kEd + "2", std::string("org.example.Ed"), "../applications/" + kEd, std::string()})
    EXPECT_EQ(copies(other), 0) << other;
}

TEST_F(WorkspaceTest, AnEndedProgramIsGoneAndAReplacedOneIsNot) {
  const std::string program = desktop_.program("bin/ed");
  desktop_.declare(kEd, program);
  const auto runs = [this] { return *workspace_.isRunning(kEd); };
  Running old(program, kWait);
  EXPECT_TRUE(soon(runs)) << "it has a name of its own by then";
  fs::rename(desktop_.program("bin/ed.new"), program);
  EXPECT_TRUE(*workspace_.isRunning(kEd));
  fs::remove(program);
  EXPECT_TRUE(*workspace_.isRunning(kEd));
  kill(old.number(), SIGKILL);
  EXPECT_TRUE(soon([this] { return copies() == 0; })) << "nobody has collected it";
  // The name alone, of another program, is no evidence.
  const Running pretender(desktop_.program("bin/ed (deleted)"), kWait);
  EXPECT_FALSE(*workspace_.isRunning(kEd));

  fs::create_symlink(desktop_.program("bin/ed"), desktop_ / "editor");
  for (const std::string& started : {program, desktop_ / "editor"}) {
    desktop_.declare(kEd, started);
    const Running renamed(started, kWait);
    EXPECT_TRUE(soon(runs)) << started;
    fs::rename(program, program + ".old");
    desktop_.program("bin/ed");
    EXPECT_TRUE(*workspace_.isRunning(kEd)) << started;
  }
}

TEST_F(WorkspaceTest, AnInterpreterIsNotTheApplication) {
  const std::string text = "#!/usr/bin/env python3\nimport signal\nsignal.pause()\n";
  const std::string script = desktop_.script("bin/ed.py", text);
  const std::string other = desktop_.script("bin/other.py", text);
  desktop_.declare(kEd, script + " %F");
  desktop_.declare("org.example.Python", "/usr/bin/python3");
  desktop_.declare("org.example.Shell", "sh -c \"exec " + script + "\"");
  const Running unrelated(kPython, {other, script});
  EXPECT_EQ(copies(), 0);
  const Running direct(script);
  const Running named(kPython, {"-u", desktop_ / "bin/../bin/ed.py", "film"});
  EXPECT_TRUE(soon([this] { return copies() == 2; })) << copies();
  EXPECT_EQ(copies("org.example.Python"), 0);
  EXPECT_EQ(copies("org.example.Shell"), 0);
}

TEST_F(WorkspaceTest, OtherPeoplesProgramsDoNotCount) {
  if (getuid() != 0) GTEST_SKIP() << "only the superuser can start programs of others";
  const std::string program = desktop_.program("bin/ed");
  fs::permissions(desktop_.home(), fs::perms::others_exec | fs::perms::group_exec, fs::perm_options::add);
  desktop_.declare(kEd, program);
  Running other("/usr/bin/setpriv", {"--reuid=65534", "--clear-groups", program, "-f", "/dev/null"});
  const std::string link = "/proc/" + std::to_string(other.number()) + "/exe";
  ASSERT_TRUE(soon([&] { return fs::read_symlink(link) == program; }));
  EXPECT_EQ(copies(), 0);
  EXPECT_TRUE(workspace_.quitApplication("Ed", kEd));
  EXPECT_TRUE(other.isAlive());
}

TEST_F(WorkspaceTest, AnApplicationIsAskedByItsMainWindowsAndNeverSentASignal) {
  const std::string editor = fs::read_symlink("/proc/self/exe").parent_path() / "windows_of_an_editor";
  const std::string program = desktop_ / "bin/ed";
  fs::copy_file(editor, program);
  desktop_.declare(kEd, program);
  const auto asks = [this] { return *workspace_.canBeAskedToQuit(kEd); };
  const auto quitFails = [this] {
    const Status asked = workspace_.quitApplication("Ed", kEd);
    return !asked && asked.error().code == std::errc::operation_not_supported;
  };
  {
    Running hidden(program);
    ASSERT_TRUE(soon([this] { return copies() == 1; }));
    EXPECT_TRUE(!asks() && quitFails()) << "without a display";
    EXPECT_TRUE(hidden.isAlive());
  }
  if (!exists("/usr/bin/Xvfb")) GTEST_SKIP() << "Xvfb is not installed";
  const Running server("/bin/sh", {"-c", "exec Xvfb -displayfd 3 -nolisten tcp 3>\"$HOME/display\""});
  ASSERT_TRUE(soon([this] { return exists(desktop_ / "display") && readFile(desktop_ / "display").ends_with('\n'); }));
  const std::string display = readFile(desktop_ / "display");
  const EnvironmentChange shown("DISPLAY", ":" + display.substr(0, display.size() - 1));
  helper_.emplace([this] { return desktopHelperProgram(users_); });
  Running first(program, {desktop_ / "asked"});
  ASSERT_TRUE(soon([this] { return exists(desktop_ / "asked"); }));
  EXPECT_TRUE(asks());
  EXPECT_TRUE(workspace_.quitApplication("Ed", kEd));
  EXPECT_TRUE(soon([this] { return readFile(desktop_ / "asked") == "main 1\nmain 2\n"; }))
      << "no palette, no dialog, no other program";
  const Running second(program);
  ASSERT_TRUE(soon([this] { return copies() == 2; }));
  EXPECT_TRUE(!asks() && quitFails()) << "one copy has no window";
  EXPECT_TRUE(soon([this] { return readFile(desktop_ / "asked") == "main 1\nmain 2\nmain 1\nmain 2\n"; }));
  EXPECT_TRUE(first.isAlive() && copies() == 2);
}

TEST_F(WorkspaceTest, ALaunchedApplicationStandsOnItsOwn) {
  desktop_.declare(kEd, recorder());
  const Status launched = workspace_.launchApplication(kEd);
  ASSERT_TRUE(launched) << launched.error().text;
  const Start start = started();
  EXPECT_EQ(getsid(start.process), start.process);
  EXPECT_EQ(start.folder, desktop_.home());
  EXPECT_EQ(start.output, "/dev/null");
  // Its program is another by now, but whoever starts an entry leaves a mark.
  EXPECT_TRUE(*workspace_.isRunning(kEd));
  EXPECT_EQ(fs::read_symlink("/proc/" + std::to_string(start.process) + "/exe"), desktop_ / "bin/waiting");
  helper_.reset();
  EXPECT_EQ(kill(start.process, 0), 0);
}

TEST_F(WorkspaceTest, SaysWhatIsWrongWithAnEntry) {
  const auto failure = [this](const std::string& identifier) {
    const Status launched = workspace_.launchApplication(identifier);
    return launched ? "started" : launched.error().text;
  };
  EXPECT_EQ(failure(kEd), kEd + ": No application of this identifier is installed.");
  desktop_.declare(kEd, desktop_ / "bin/missing");
  EXPECT_THAT(failure(kEd), HasSubstr("The program that this names is not installed."));
  EXPECT_FALSE(workspace_.applicationPath(kEd));

  mkfifo(desktop_.entry("org.example.Fifo").c_str(), 0600);
  writeFile(desktop_.entry("org.example.Text"), "no key file\n[");
  writeFile(desktop_.entry("org.example.Large"), "[Desktop Entry]\nExec=tail\n" + std::string(1 << 20, '#'));
  desktop_.declare("org.example.Quotes", "\"unfinished");
  desktop_.declare("org.example.NoCommand", "");
  for (const char* name : {"Fifo", "Text", "Large", "Quotes", "NoCommand"}) {
    const std::string identifier = std::string("org.example.").append(name);
    EXPECT_NE(failure(identifier), "started") << name;
    EXPECT_FALSE(*workspace_.isRunning(identifier)) << name;
  }
}

class ApplicationBusTest : public WorkspaceTest {
 protected:
  void SetUp() override {
    if (const std::string reason = SessionBus::missing(); !reason.empty()) GTEST_SKIP() << reason;
    bus_.emplace();
  }
  std::optional<SessionBus> bus_;
};

TEST_F(ApplicationBusTest, IsAskedToQuitByItsActionAndOtherCopiesAreLeftAlone) {
  const std::string program = desktop_.program("bin/ed");
  desktop_.declare(kEd, program);
  const HelperProcess similar = bus_->start("application.py", {"org.example.Editor", "quit"});
  HelperProcess ed = bus_->start("application.py", {kEd, "save", "quit"});
  Running copy(program, kWait);
  EXPECT_EQ(copies(), 2);
  EXPECT_FALSE(*workspace_.canBeAskedToQuit(kEd));
  EXPECT_FALSE(workspace_.quitApplication("Ed", kEd));
  EXPECT_THAT(heardBy(ed), ElementsAre("quit"));
  EXPECT_TRUE(soon([this] { return copies() == 1; }));
  EXPECT_TRUE(copy.isAlive());
  EXPECT_TRUE(*workspace_.isRunning("org.example.Editor"));
}

TEST_F(ApplicationBusTest, AnApplicationOfKdeIsAskedByTheActionOfAWindow) {
  {
    const HelperProcess busy = bus_->start("kde_application.py", {kEd, "MainWindow_1", "--busy"});
    EXPECT_FALSE(*workspace_.canBeAskedToQuit(kEd));
  }
  HelperProcess ed = bus_->start("kde_application.py", {kEd, "Palette_1", "MainWindow_3"});
  EXPECT_TRUE(*workspace_.canBeAskedToQuit(kEd));
  EXPECT_TRUE(workspace_.quitApplication("Ed", kEd));
  EXPECT_THAT(heardBy(ed), ElementsAre("quit", "MainWindow_3"));
  EXPECT_TRUE(soon([this] { return copies() == 0; }));
}

TEST_F(ApplicationBusTest, OneThatTakesTimeToAnswerIsNotCutShort) {
  HelperProcess ed = bus_->start("application.py", {kEd, "quit", "--asks"});
  EXPECT_TRUE(workspace_.quitApplication("Ed", kEd));
  EXPECT_THAT(heardBy(ed), ElementsAre("quit"));
  EXPECT_TRUE(*workspace_.isRunning(kEd));
  EXPECT_THAT(heardBy(ed, std::chrono::milliseconds(500)), IsEmpty()) << "it has unsaved work";
  EXPECT_TRUE(workspace_.quitApplication("Ed", kEd));
  EXPECT_THAT(heardBy(ed), ElementsAre("quit")) << "nor when it is asked once more";
}

TEST_F(ApplicationBusTest, StartsAndShowsActivatableApplicationsThere) {
  desktop_.declare(kEd, "/usr/bin/false", "DBusActivatable=true\n");
  EXPECT_EQ(workspace_.activateApplication(kEd).error().code, std::errc::not_supported);
  {
    HelperProcess ed = bus_->start("application.py", {kEd});
    EXPECT_TRUE(workspace_.launchApplication(kEd));
    EXPECT_THAT(heardBy(ed), ElementsAre("activate"));
    EXPECT_TRUE(workspace_.openFile("/tmp/a film.fcp", kEd));
    EXPECT_THAT(heardBy(ed), ElementsAre("open", "/tmp/a film.fcp"));
  }
  EXPECT_FALSE(workspace_.launchApplication(kEd)) << "nobody offers the name now, and the bus cannot start anyone";
}

}  // namespace
}  // namespace vantory::test
