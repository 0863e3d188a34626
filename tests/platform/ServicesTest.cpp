// Standard folders, small files, the system's log and its tools.
#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <memory>

#include "platform/linux/system/LinuxStandardFolders.h"
#include "platform/linux/system/LinuxSystemTools.h"
#include "platform/macos/system/MacStandardFolders.h"
#include "platform/macos/system/MacSystemTools.h"
#include "platform/posix/files/SmallFiles.h"
#include "platform/posix/processes/PosixProcesses.h"
#include "platform/posix/system/PosixSystemLog.h"
#include "tests/platform/StandInTools.h"
#include "tests/platform/Systems.h"
#include "tests/support/EnvironmentChange.h"
#include "tests/support/ScratchFolder.h"

namespace vantory::test {
namespace {

constexpr bool kSuperuser = true;

class FoldersTest : public ::testing::Test {
 protected:
  void desktopSettings(const std::string& value) {
    writeFile(home_ / ".config/user-dirs.dirs", "# comment\nXDG_DESKTOP_DIR=" + value + "\nXDG_MUSIC_DIR=\"/x\"\n");
  }
  std::string user(StandardFolder folder, bool superuser = false) const {
    return LinuxStandardFolders("", superuser).userFolder(folder, home_.path()).value_or("none");
  }

  ScratchFolder home_;
  EnvironmentChange data_{"XDG_DATA_HOME", std::nullopt};
  EnvironmentChange config_{"XDG_CONFIG_HOME", std::nullopt};
};

TEST_F(FoldersTest, OnlyAnOrdinaryUsersEnvironmentMovesFolders) {
  EXPECT_EQ(user(StandardFolder::Desktop), home_ / "Desktop");
  desktopSettings("\"$HOMESTEAD/x\"");
  EXPECT_EQ(user(StandardFolder::Desktop), home_ / "Desktop");
  desktopSettings("\"$HOME/Configured\"");
  writeFile(home_ / "other/user-dirs.dirs", "XDG_DESKTOP_DIR=\"$HOME/Other\"\n");
  const EnvironmentChange config("XDG_CONFIG_HOME", home_ / "other");
  const EnvironmentChange data("XDG_DATA_HOME", "/srv/data/");
  EXPECT_EQ(user(StandardFolder::Desktop), home_ / "Other");
  EXPECT_EQ(user(StandardFolder::Trash), "/srv/data/Trash/files");
  EXPECT_EQ(user(StandardFolder::Desktop, kSuperuser), home_ / "Configured");
  EXPECT_EQ(user(StandardFolder::Trash, kSuperuser), home_ / ".local/share/Trash/files");
}

TEST_F(FoldersTest, OfAMacAreThoseOfItsBackups) {
  const MacStandardFolders mac("/root");
  const LinuxStandardFolders other("/root", true);
  for (const StandardFolder folder : {StandardFolder::Applications, StandardFolder::Library, StandardFolder::Caches,
                                      StandardFolder::Documents, StandardFolder::SharedUsers}) {
    EXPECT_EQ(mac.userFolder(folder, "/home"), other.userFolder(folder, "/home"));
    EXPECT_EQ(mac.localFolder(folder), other.localFolder(folder));
  }
  EXPECT_EQ(mac.userFolder(StandardFolder::Trash, "/home"), "/home/.Trash");
}

class SystemToolsTest : public SystemTest {
 protected:
  // On a Mac "ditto" packs when it is called so, and says what is wrong as it would.
  SystemToolsTest() {
    standIns_.put("/usr/bin/ditto", R"(
      [ "$1 $2 $3" = '-c -k --keepParent' ] && [ $# = 5 ] || exit 64
      [ -e "$4" ] || { echo "ditto: can't get real path for source '$4'" >&2; exit 1; }
      exec python3 -m zipfile -c "$5" "$4")");
  }
  std::unique_ptr<SystemTools> tools() const {
    if (isMac) return std::make_unique<MacSystemTools>();
    return std::make_unique<LinuxSystemTools>();
  }
  // What it says of a failure; empty when it ends well.
  static std::string run(const ToolCall& call) {
    const auto process = PosixProcesses().start(call.tool, call.arguments, Streams::Captured);
    if (!process) return process.error().text;
    const std::string said = (*process)->readAll().errors;
    const int code = (*process)->wait();
    return code == 0 ? "" : std::to_string(code) + ": " + said;
  }

  StandInTools standIns_;
  const ScratchFolder folder_;
};

VANTORY_ON_EACH_SYSTEM(SystemToolsTest);

TEST_P(SystemToolsTest, AnItemIsPackedUnderItsOwnNameWhateverThatIs) {
  if (!exists("/usr/bin/bsdtar")) GTEST_SKIP() << "bsdtar is not installed";
  const std::string archive = folder_ / "it's an archive.zip";
  for (const std::string name : {"Clean setup.vnt", "-c", "@name"}) {
    writeFile(folder_ / (name + "/sub/file"), name);
    EXPECT_EQ(run(tools()->zip(folder_ / name, archive)), "");
    EXPECT_EQ(run({"/usr/bin/python3", {"-m", "zipfile", "-e", archive, folder_ / "out"}}), "");
    EXPECT_EQ(readFile(folder_ / ("out/" + name + "/sub/file")), name);
  }
  EXPECT_THAT(run(tools()->zip(folder_ / "missing", archive)), testing::MatchesRegex("1: .*missing.*\n"));
}

TEST(MacSystemToolsTest, WhatTheFinderIsToShowIsNoPartOfTheScript) {
  const StandInTools standIns;
  const auto call = MacSystemTools().refreshView("/a\" & \"b");
  ASSERT_TRUE(call);
  EXPECT_EQ(call->tool, standIns / "usr/bin/osascript");
  ASSERT_EQ(call->arguments.size(), 3u);
  EXPECT_EQ(call->arguments[0] + call->arguments[2], "-e/a\" & \"b");
}

TEST(AssignmentFileTest, NeitherWaitsNorReadsWhatIsNoSmallFile) {
  const ScratchFolder folder;
  ASSERT_EQ(mkfifo((folder / "fifo").c_str(), 0600), 0);
  EXPECT_FALSE(assignedValue(folder / "fifo", "KEY"));
  EXPECT_FALSE(assignedValue(folder.path(), "KEY"));
  writeFile(folder / "large", std::string(1 << 20, 'x') + "\nKEY=late\n");
  EXPECT_FALSE(assignedValue(folder / "large", "KEY"));
  writeFile(folder / "file", "KEYS=1\nKEY=first\n  KEY=last \nOTHER=");
  EXPECT_EQ(assignedValue(folder / "file", "KEY"), "last");
}

TEST(SystemLogTest, NeverWritesIntoAFileThatTookTheNumberOfStandardError) {
  const ScratchFolder folder;
  const std::string path = folder / "settings";
  const pid_t child = fork();
  if (child == 0) {
    for (int standard : {0, 1, 2}) close(standard);
    PosixSystemLog log;
    while (open(path.c_str(), O_CREAT | O_WRONLY | O_CLOEXEC, 0600) < STDERR_FILENO) {
    }
    log.write("message");
    _exit(0);
  }
  int status = -1;
  ASSERT_EQ(waitpid(child, &status, 0), child);
  EXPECT_EQ(status, 0);
  EXPECT_EQ(readFile(path), "");
}

}  // namespace
}  // namespace vantory::test
