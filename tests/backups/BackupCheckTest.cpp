// What is wrong with a backup is found, and nothing else.
#include "backups/BackupCheck.h"

#include <sys/stat.h>

#include <functional>

#include "platform/Checksums.h"
#include "tests/backups/BackupsTest.h"

namespace vantory::test {
namespace {

namespace fs = std::filesystem;
using Kind = BackupFault::Kind;

class BackupCheckTest : public BackupsTest {
 protected:
  BackupCheckTest() {
    for (const char* name : {"bars/one", "bars/two", "bars/sub/three", "editor.plist"}) writeFile(prefs(name), name);
    setCatalog({{"Bars", {prefs("bars")}}, {"Preferences", {prefs("editor.plist")}}});
  }

  // How a new backup fares with which something is done.
  std::vector<Kind> faultsAfter(const std::function<void(const std::string& files)>& change) {
    EXPECT_EQ(backupOfAll("B")->writeData(report_), WriteResult::Success);
    change(inLibrary("B.vnt/Users/user/Library/Preferences/"));
    check_ = checkBackup(*QWBackup::backupWithFile(inLibrary("B.vnt")));
    std::vector<Kind> kinds;
    for (const BackupFault& fault : check_.faults) kinds.push_back(fault.kind);
    return kinds;
  }

  BackupCheck check_;
};

TEST_F(BackupCheckTest, FindsWhatIsWrongAndNothingElse) {
  using Files = const std::string&;
  EXPECT_THAT(faultsAfter([](Files) {}), IsEmpty());
  EXPECT_EQ(check_.files, 4U);
  EXPECT_EQ(check_.withoutChecksum, 0U);
  EXPECT_TRUE(check_.isHeldKnown);
  EXPECT_THAT(faultsAfter([](Files files) { writeFile(files + "bars/two", "bars/twO"); }), ElementsAre(Kind::Damaged));
  EXPECT_THAT(faultsAfter([](Files files) { fs::remove(files + "bars/sub/three"); }), ElementsAre(Kind::Paths));
  EXPECT_THAT(faultsAfter([](Files files) {
                fs::remove_all(files + "bars");
                writeFile(files + "bars", "");
                fs::remove(files + "editor.plist");
                fs::create_directory(files + "editor.plist");
              }),
              ElementsAre(Kind::Paths));
  EXPECT_EQ(check_.faults[0].text, "4 files were backed up, 1 is there");
  EXPECT_THAT(faultsAfter([](Files files) { fs::remove(files + "editor.plist"); }),
              ElementsAre(Kind::Paths, Kind::Missing));
  EXPECT_THAT(faultsAfter([](Files files) { fs::rename(files + "bars/one", files + "bars/1"); }),
              ElementsAre(Kind::Paths));
  // With a link or a FIFO in its place the number is right.
  EXPECT_THAT(faultsAfter([](Files files) {
                fs::remove(files + "editor.plist");
                fs::create_symlink("../../../../../secret", files + "editor.plist");
              }),
              ElementsAre(Kind::Paths, Kind::LeadsOut));
  EXPECT_THAT(faultsAfter([](Files files) {
                fs::remove(files + "bars/one");
                mkfifo((files + "bars/one").c_str(), 0600);
              }),
              ElementsAre(Kind::Paths, Kind::Special));
  EXPECT_THAT(faultsAfter([this](Files) { writeFile(inLibrary("B.vnt/Settings.plist"), "<plist><dict>"); }),
              ElementsAre(Kind::Settings));
  // Deeper than any path can be.
  EXPECT_THAT(faultsAfter([](Files files) {
                const fs::path before = fs::current_path();
                fs::current_path(files);
                for (int i = 0; i < 30; ++i) {
                  fs::create_directory(std::string(200, 'd'));
                  fs::current_path(std::string(200, 'd'));
                }
                fs::current_path(before);
              }),
              ElementsAre(Kind::Unreadable));
}

TEST_F(BackupCheckTest, LinksOfTheUserAreNoDamage) {
  fs::create_symlink("one", prefs("bars/link"));
  fs::create_symlink("/usr/share", prefs("bars/out"));
  EXPECT_THAT(faultsAfter([](const std::string&) {}), IsEmpty());
  ASSERT_EQ(check_.remarks.size(), 1U);
  EXPECT_THAT(check_.remarks[0].path, testing::EndsWith("/bars/out"));
}

TEST_F(BackupCheckTest, ABackupWithoutNotesIsSound) {
  const std::string settings = inLibrary("B.vnt/Settings.plist");
  EXPECT_THAT(faultsAfter([&](const std::string& files) {
                ASSERT_TRUE(fakes_.checksums.setHeld(settings, std::nullopt).ok());
                fs::copy(files + "bars/one", files + "bars/copied");
              }),
              IsEmpty());
  EXPECT_EQ(check_.withoutChecksum, 1U);
  EXPECT_FALSE(check_.isHeldKnown);
}

TEST_F(BackupCheckTest, AnUpdateLeavesASoundBackupSoundAndCallsNoOtherSo) {
  const auto update = [&](const std::string&) {
    writeFile(prefs("bars/four"), "new");
    EXPECT_EQ(QWBackup::backupWithFile(inLibrary("B.vnt"))->writeData(report_, true), WriteResult::Success);
  };
  EXPECT_THAT(faultsAfter(update), IsEmpty());
  EXPECT_TRUE(check_.isHeldKnown);
  EXPECT_THAT(faultsAfter([&](const std::string& files) {
                writeFile(files + "stray", "");
                update(files);
              }),
              ElementsAre(Kind::Paths));
  // Killed between two copies: what was noted would be wrong.
  EXPECT_THAT(faultsAfter([&](const std::string&) {
                files_.heal();
                files_.crashBefore(Operation::Commit, 4);
                writeFile(prefs("bars/five"), "new");
                EXPECT_THROW(QWBackup::backupWithFile(inLibrary("B.vnt"))->writeData(report_, true), SimulatedCrash);
                files_.heal();
                EXPECT_TRUE(exists(inLibrary("B.vnt/Users/user/Library/Preferences/bars/five")));
              }),
              IsEmpty());
  EXPECT_FALSE(check_.isHeldKnown);
}

}  // namespace
}  // namespace vantory::test
