// The desktop's Trash: every item kept, each with the note that brings it back.
#include <gtest/gtest.h>
#include <sys/stat.h>

#include "platform/linux/LinuxFileSystem.h"
#include "tests/support/ScratchFolder.h"

namespace vantory::test {
namespace {

class TrashTest : public testing::Test {
 protected:
  std::string trash(const std::string& path) {
    auto result = files.trash(path, files_);
    return result ? *result : "failed: " + result.error().text;
  }
  std::string infoOf(const std::string& name) {
    return readFile(home / (".local/share/Trash/info/" + name + ".trashinfo"));
  }

  ScratchFolder home;
  LinuxFileSystem files;
  std::string files_ = home / ".local/share/Trash/files";
};

TEST_F(TrashTest, WritesWhereTheItemLayAndMakesThePrivateFolders) {
  writeFile(home / "Library/a b%\xC3\xBC\n\xFF.plist", "x");
  EXPECT_EQ(trash(home / "Library/a b%\xC3\xBC\n\xFF.plist"), files_ + "/a b%\xC3\xBC\n\xFF.plist");
  const std::string info = infoOf("a b%\xC3\xBC\n\xFF.plist");
  EXPECT_EQ(info.rfind("[Trash Info]\nPath=" + home.path() + "/Library/a%20b%25%C3%BC%0A%FF.plist\nDeletionDate=2", 0),
            0u)
      << info;
  struct stat status {};
  ASSERT_EQ(stat((home / ".local/share/Trash").c_str(), &status), 0);
  EXPECT_EQ(status.st_mode & 0777, 0700u);
}

TEST_F(TrashTest, TakesFoldersThatMayNotBeChangedAndTheLongestNames) {
  writeFile(home / std::string(255, '\x80'), "no text");
  EXPECT_EQ(readFile(trash(home / std::string(255, '\x80'))), "no text");
  writeFile(home / "folder/file", "x");
  ASSERT_EQ(chmod((home / "folder").c_str(), 0500), 0);
  EXPECT_EQ(trash(home / "folder"), files_ + "/folder");
  struct stat status {};
  ASSERT_EQ(stat((files_ + "/folder").c_str(), &status), 0);
  EXPECT_EQ(status.st_mode & 0777, 0500u);
  chmod((files_ + "/folder").c_str(), 0700);
}

}  // namespace
}  // namespace vantory::test
