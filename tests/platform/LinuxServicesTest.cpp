#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <filesystem>

#include "platform/linux/AssignmentFile.h"
#include "platform/linux/LinuxStandardFolders.h"
#include "platform/linux/LinuxSystemInfo.h"
#include "platform/linux/LinuxSystemLog.h"
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

TEST_F(FoldersTest, TheDesktopIsWhereTheUserConfiguredIt) {
  EXPECT_EQ(user(StandardFolder::Desktop), home_ / "Desktop");
  for (const auto& [setting, expected] : std::vector<std::pair<std::string, std::string>>{
           {"\"$HOME/Schreib tisch/\"", home_ / "Schreib tisch"},
           {"\"$HOME\"", home_.path()},
           {"'/srv/desks/anna'", "/srv/desks/anna"},
           {"\"/srv/a\\\"b\"", "/srv/a\"b"},
           {"\"Desk\"", home_ / "Desktop"},
           {"\"$HOMESTEAD/x\"", home_ / "Desktop"},
           {"", home_ / "Desktop"},
       }) {
    desktopSettings(setting);
    EXPECT_EQ(user(StandardFolder::Desktop), expected) << setting;
  }
}

TEST_F(FoldersTest, OnlyAnOrdinaryUsersEnvironmentMovesFolders) {
  desktopSettings("\"$HOME/Configured\"");
  writeFile(home_ / "other/user-dirs.dirs", "XDG_DESKTOP_DIR=\"$HOME/Other\"\n");
  const EnvironmentChange config("XDG_CONFIG_HOME", home_ / "other");
  const EnvironmentChange data("XDG_DATA_HOME", "/srv/data/");
  EXPECT_EQ(user(StandardFolder::Desktop), home_ / "Other");
  EXPECT_EQ(user(StandardFolder::Trash), "/srv/data/Trash/files");
  EXPECT_EQ(user(StandardFolder::Desktop, kSuperuser), home_ / "Configured");
  EXPECT_EQ(user(StandardFolder::Trash, kSuperuser), home_ / ".local/share/Trash/files");

  const EnvironmentChange relativeConfig("XDG_CONFIG_HOME", "other");
  const EnvironmentChange relativeData("XDG_DATA_HOME", "data");
  EXPECT_EQ(user(StandardFolder::Desktop), home_ / "Configured");
  EXPECT_EQ(user(StandardFolder::Trash), home_ / ".local/share/Trash/files");
}

TEST_F(FoldersTest, MachineWideFoldersLieBelowTheRoot) {
  const LinuxStandardFolders folders("/tmp/root");
  for (int number = 0; number <= static_cast<int>(StandardFolder::Volumes); ++number) {
    const auto local = folders.localFolder(static_cast<StandardFolder>(number));
    EXPECT_TRUE(!local || local->starts_with("/tmp/root/")) << *local;
  }
  EXPECT_EQ(folders.systemLibraryFolder(), "/tmp/root/System/Library");
  EXPECT_EQ(LinuxStandardFolders().localFolder(StandardFolder::SharedUsers), "/Users/Shared");
  EXPECT_FALSE(folders.localFolder(StandardFolder::Trash));
  EXPECT_FALSE(folders.userFolder(StandardFolder::Volumes, "/tmp/home"));
}

TEST(AssignmentFileTest, NeitherWaitsNorReadsWhatIsNoSmallFile) {
  const ScratchFolder folder;
  ASSERT_EQ(mkfifo((folder / "fifo").c_str(), 0600), 0);
  EXPECT_FALSE(assignedValue(folder / "fifo", "KEY"));
  EXPECT_FALSE(assignedValue(folder.path(), "KEY"));
  EXPECT_FALSE(assignedValue(folder / "missing", "KEY"));
  writeFile(folder / "large", std::string(1 << 20, 'x') + "\nKEY=late\n");
  EXPECT_FALSE(assignedValue(folder / "large", "KEY"));
  writeFile(folder / "file", "KEYS=1\nKEY=first\n  KEY=last \nOTHER=");
  EXPECT_EQ(assignedValue(folder / "file", "KEY"), "last");
  EXPECT_EQ(assignedValue(folder / "file", "OTHER"), "");
}

TEST(SystemInfoTest, DescribesThisMachineAndProcess) {
  const LinuxSystemInfo info({"vantory", "-list"});
  EXPECT_FALSE(info.systemName().empty());
  EXPECT_GE(info.processorCount(), 1);
  EXPECT_GT(info.memoryBytes(), std::uint64_t{1} << 20);
  EXPECT_TRUE(std::filesystem::equivalent(info.executablePath(), "/proc/self/exe"));
  EXPECT_EQ(info.workingDirectory(), std::filesystem::current_path().native());
  EXPECT_THAT(info.arguments(), ::testing::ElementsAre("vantory", "-list"));
  const std::string unique = info.uniqueString();
  EXPECT_THAT(unique, ::testing::MatchesRegex("[0-9A-F]+-[0-9A-F]+-4[0-9A-F]+-[89AB][0-9A-F]+-[0-9A-F]+"));
  EXPECT_EQ(unique.size(), 36U);
  EXPECT_NE(unique, info.uniqueString());
}

// Runs the work in a child process, so that it may do as it likes with descriptors and signals; its exit status.
template <class Work>
int statusOfChild(Work work) {
  const pid_t child = fork();
  if (child == 0) _exit(work() ? 0 : 1);
  int status = -1;
  waitpid(child, &status, 0);
  return status;
}

TEST(SystemLogTest, WritesOneLineForAMessage) {
  const ScratchFolder folder;
  const std::string path = folder / "errors";
  const int status = statusOfChild([&] {
    dup2(open(path.c_str(), O_CREAT | O_WRONLY | O_CLOEXEC, 0600), STDERR_FILENO);
    LinuxSystemLog().write("100 %s of\ntwo\r\nlines");
    return true;
  });
  EXPECT_EQ(status, 0);
  EXPECT_EQ(readFile(path), "Vantory: 100 %s of two  lines\n");
}

TEST(SystemLogTest, NeverWritesIntoAFileThatTookTheNumberOfStandardError) {
  const ScratchFolder folder;
  const std::string path = folder / "settings";
  const int status = statusOfChild([&] {
    for (int standard : {0, 1, 2}) close(standard);
    LinuxSystemLog log;
    while (open(path.c_str(), O_CREAT | O_WRONLY | O_CLOEXEC, 0600) < STDERR_FILENO) {
    }
    log.write("message");
    return true;
  });
  EXPECT_EQ(status, 0);
  EXPECT_EQ(readFile(path), "");
}

TEST(SystemLogTest, SurvivesAReaderThatWentAway) {
  const int status = statusOfChild([] {
    int ends[2];
    if (pipe(ends) != 0) return false;
    dup2(ends[1], STDERR_FILENO);
    close(ends[0]);
    LinuxSystemLog().write("message");
    sigset_t pending;
    sigpending(&pending);
    return sigismember(&pending, SIGPIPE) == 0;
  });
  EXPECT_EQ(status, 0);
}

}  // namespace
}  // namespace vantory::test
