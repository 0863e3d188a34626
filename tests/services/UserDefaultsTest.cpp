#include "services/settings/QWUserDefaults.h"

#include <filesystem>

#include "services/files/QWFileManager.h"
#include "tests/services/ServicesTest.h"

namespace vantory::test {
namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::SizeIs;
using testing::StartsWith;

class UserDefaultsTest : public ServicesTest {
 protected:
  void write(const std::string& entries) {
    writeFile(file_, "<plist version=\"1.0\"><dict>" + entries + "</dict></plist>");
  }
  std::vector<std::string> filesInFolder() { return QWFileManager::contentsOfDirectory(home_ / "Library/Preferences"); }

  const std::string file_ = home_ / "Library/Preferences/com.quarrywell.Vantory.plist";
  QWUserDefaults& defaults_ = QWUserDefaults::standardUserDefaults();
};

TEST_F(UserDefaultsTest, LooksAtTheUserThenTheMachineThenTheRegistered) {
  defaults_.registerDefaults({{"a", 1}, {"b", 1}, {"c", 1}});
  writeFile(machine_ / "Library/Preferences/com.quarrywell.Vantory.plist",
            "<plist><dict><key>a</key><integer>2</integer><key>b</key><integer>2</integer></dict></plist>");
  ASSERT_TRUE(defaults_.setObject("a", 3));
  EXPECT_EQ(defaults_.integerForKey("a"), 3);
  EXPECT_EQ(defaults_.integerForKey("b"), 2);
  EXPECT_EQ(defaults_.integerForKey("c"), 1);
  EXPECT_EQ(defaults_.objectForKey("d"), std::nullopt);
  ASSERT_TRUE(defaults_.removeObjectForKey("a"));
  EXPECT_EQ(defaults_.integerForKey("a"), 2);
  EXPECT_EQ(std::filesystem::status(file_).permissions(), std::filesystem::perms(0600));
}

TEST_F(UserDefaultsTest, ConvertsNumbersAndTexts) {
  write(
      "<key>t</key><string> 12 days</string><key>big</key><string>-99999999999999999999</string>"
      "<key>huge</key><real>1e300</real><key>maxAutoBackups</key><string>many</string><key>days</key><dict/>");
  EXPECT_EQ(defaults_.integerForKey("t"), 12);
  EXPECT_EQ(defaults_.integerForKey("big"), INT64_MIN);
  EXPECT_EQ(defaults_.integerForKey("huge"), INT64_MAX);
  defaults_.registerDefaults({{"maxAutoBackups", 10}});
  EXPECT_EQ(defaults_.integerForKey("maxAutoBackups"), 10) << "the others would be deleted";
  EXPECT_EQ(defaults_.integerForKey("days"), 0);
  ASSERT_TRUE(defaults_.setObject("backupPath", "/no\xffutf8"));
  EXPECT_EQ(defaults_.stringForKey("backupPath"), "/no\xffutf8");
}

TEST_F(UserDefaultsTest, KeepsWhatOthersWrite) {
  ASSERT_TRUE(defaults_.setObject("mine", 1));
  write("<key>other</key><integer>5</integer>");
  EXPECT_EQ(defaults_.integerForKey("other"), 5);
  ASSERT_TRUE(defaults_.setObject("mine", 2));
  EXPECT_EQ(defaults_.integerForKey("other"), 5);
}

TEST_F(UserDefaultsTest, SetsADamagedFileAside) {
  writeFile(file_, "damaged");
  EXPECT_EQ(defaults_.integerForKey("a"), 0);
  EXPECT_EQ(defaults_.integerForKey("a"), 0);
  EXPECT_THAT(logged(), ElementsAre("The settings in " + file_ + " are damaged and are not used."));
  files_.fail(Operation::Move, std::errc::io_error);
  EXPECT_FALSE(defaults_.setObject("a", 1));
  EXPECT_EQ(readFile(file_), "damaged");
  EXPECT_TRUE(defaults_.setObject("a", 1));
  EXPECT_EQ(defaults_.integerForKey("a"), 1);
  EXPECT_THAT(filesInFolder(), SizeIs(2));
  EXPECT_THAT(filesInFolder(), Contains(StartsWith("com.quarrywell.Vantory.plist.damaged-2026")));
  EXPECT_THAT(logged().back(), HasSubstr("were damaged and now lie at"));
}

TEST_F(UserDefaultsTest, NeverReplacesWhatCannotBeReadOrWritten) {
  write("<key>a</key><integer>5</integer>");
  const std::string before = readFile(file_);
  files_.fail(Operation::Read, std::errc::permission_denied, FaultyFileSystem::kEveryCall);
  for (int i = 0; i < 2; ++i) EXPECT_EQ(defaults_.integerForKey("a"), 0);
  EXPECT_FALSE(defaults_.setObject("a", 6));
  const auto told = logged();
  EXPECT_THAT(told, Contains("Unable to read the settings: " + file_ + ": Permission denied").Times(1));
  EXPECT_THAT(told, Contains("Unable to save the settings: " + file_ + ": Permission denied"));
  files_.heal();
  EXPECT_EQ(defaults_.integerForKey("a"), 5);
  for (const Operation operation : {Operation::Write, Operation::HoldFolder}) {
    files_.fail(operation, std::errc::no_space_on_device);
    EXPECT_FALSE(defaults_.setObject("a", 7));
    files_.heal();
  }
  EXPECT_EQ(readFile(file_), before);
  EXPECT_TRUE(defaults_.setObject("a", 9));
}

}  // namespace
}  // namespace vantory::test
