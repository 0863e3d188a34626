#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include "platform/linux/system/LinuxStandardFolders.h"
#include "platform/posix/files/SmallFiles.h"
#include "platform/posix/system/PosixSystemLog.h"
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
