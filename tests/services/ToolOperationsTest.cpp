// What is done by tools of the system: each test skips where its tool is missing.
#include <sys/stat.h>

#include <filesystem>

#include "services/QWFileManager.h"
#include "services/QWTask.h"
#include "tests/services/ServicesTest.h"

namespace vantory::test {
namespace {

using testing::Contains;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::StartsWith;
using Manager = QWFileManager;

class ToolOperationsTest : public ServicesTest {
 protected:
  static bool isMissing(const std::string& tool) { return !std::filesystem::exists(tool); }
  std::vector<std::string> temporaryFiles() const {
    return Manager::contentsOfDirectory(home_ / "Library/Caches/com.quarrywell.Vantory");
  }

  const std::string archive_ = home_ / "Backup.zip";
};

TEST_F(ToolOperationsTest, ZipsAFolderUnderItsOwnNameAndKeepsTheOlderArchive) {
  for (const char* tool : {"/usr/bin/bsdtar", "/usr/bin/unzip", "/usr/bin/python3"})
    if (isMissing(tool)) GTEST_SKIP() << tool << " is not installed";
  const std::string folder = home_ / "@Backup.vnt";
  writeFile(folder + "/deep/Gr\u00f6\u00dfe", "content");
  writeFile(folder + "/-C", "");
  writeFile(folder + "/\xff", "no text");
  makeFolders(folder + "/empty");
  std::filesystem::create_symlink("/etc/passwd", folder + "/link");
  ASSERT_EQ(mkfifo((folder + "/pipe").c_str(), 0600), 0);
  writeFile(archive_, "older");
  ASSERT_TRUE(Manager::compressFile(folder, archive_));
  EXPECT_EQ(readFile(home_ / ".local/share/Trash/files/Backup.zip"), "older");
  EXPECT_THAT(temporaryFiles(), IsEmpty());
  EXPECT_THAT(logged(), Contains(HasSubstr("pipe")));  // says that it was left out
  struct stat status;
  ASSERT_EQ(stat(archive_.c_str(), &status), 0);
  EXPECT_EQ(status.st_mode & 0777, 0600u);

  EXPECT_EQ(QWTask::terminationCodeFromTask("/usr/bin/unzip", {"-tq", archive_}), 0);
  const auto listed = QWTask::stringFromTask(
      "/usr/bin/python3",
      {"-c", "import sys, zipfile\nprint(sorted(zipfile.ZipFile(sys.argv[1]).namelist()))", archive_},
      QWTask::Encoding::Utf8, std::chrono::seconds(60));
  EXPECT_EQ(listed,
            "['@Backup.vnt/', '@Backup.vnt/-C', '@Backup.vnt/deep/', '@Backup.vnt/deep/Gr\u00f6\u00dfe', "
            "'@Backup.vnt/empty/', '@Backup.vnt/link', '@Backup.vnt/\ufffd']\n");
}

TEST_F(ToolOperationsTest, AnArchiveThatCannotBeMadeLeavesNothing) {
  if (isMissing("/usr/bin/bsdtar")) GTEST_SKIP() << "bsdtar is not installed";
  EXPECT_FALSE(Manager::compressFile(home_ / "none", archive_));
  EXPECT_THAT(logged(), Contains(StartsWith("Unable to compress " + (home_ / "none") + ": ")));
  writeFile(home_ / "item", "content");
  EXPECT_FALSE(Manager::compressFile(home_ / "item", home_ / "missing/Backup.zip"));
  EXPECT_FALSE(exists(archive_));
  // An older one that cannot be moved away stays as it is.
  writeFile(archive_, "older");
  files_.heal();
  files_.fail(Operation::Trash, std::errc::io_error);
  EXPECT_FALSE(Manager::compressFile(home_ / "item", archive_));
  EXPECT_EQ(readFile(archive_), "older");
  EXPECT_THAT(temporaryFiles(), IsEmpty());
}

TEST_F(ToolOperationsTest, TheSuperuserCompressesNobodyElsesFiles) {
  writeFile(home_ / "item", "content");
  fakes_.users.superuser = true;
  fakes_.users.process = User{0, 0, machine_.path()};
  EXPECT_FALSE(Manager::compressFile(home_ / "item", archive_));
}

}  // namespace
}  // namespace vantory::test
