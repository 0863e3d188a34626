// Gathering and viewing logs, and the update application, on real files.
#include <sys/stat.h>

#include <filesystem>

#include "services/files/QWFileManager.h"
#include "services/messages/QWAlert.h"
#include "services/tools/QWTask.h"
#include "settings/QWSoftwareUpdate.h"
#include "settings/QWTroubleshootingUtils.h"
#include "tests/services/ServicesTest.h"

namespace vantory::test {
namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

class SupportTest : public ServicesTest {
 protected:
  SupportTest() {
    makeFolders(desktop_);
    QWAlert::sharedController().ask = [this](const AlertTexts& texts) {
      alerts_.push_back(texts.messageText + ": " + texts.informativeText);
      return QWAlert::Default;
    };
  }

  static bool gather() { return QWTroubleshootingUtils::gatherLogsForAppWithName("Vantory"); }
  std::vector<std::string> onDesktop() const { return QWFileManager::contentsOfDirectory(desktop_); }
  // Unpacks an archive, which must be sound, and answers the folder with what was gathered.
  std::string unpacked(const std::string& archive) const {
    EXPECT_EQ(QWTask::terminationCodeFromTask("/usr/bin/unzip", {"-tq", archive}), 0);
    EXPECT_EQ(QWTask::terminationCodeFromTask("/usr/bin/unzip", {"-q", archive, "-d", home_ / "unpacked"}), 0);
    return home_ / "unpacked/QW_App_Logs";
  }
  bool leftNothing() const {
    return QWFileManager::contentsOfDirectory(home_ / "Library/Caches/com.quarrywell.Vantory").empty();
  }

  const std::string desktop_ = home_ / "Desktop";
  const std::string logs_ = home_ / "Library/Logs/Quarrywell";
  std::vector<std::string> alerts_;
};

TEST_F(SupportTest, GathersWhatSupportNeedsAndNothingElse) {
  for (const char* tool : {"/usr/bin/bsdtar", "/usr/bin/unzip"})
    if (!std::filesystem::exists(tool)) GTEST_SKIP() << tool << " is not installed";
  writeFile(logs_ + "/Vantory.1.log", "log");
  writeFile(logs_ + "/Other.1.log", "someone else's");
  writeFile(logs_ + "/Vantory.txt", "no log");
  writeFile(home_ / "linked", "linked");
  std::filesystem::create_symlink(home_ / "linked", logs_ + "/Vantory linked.log");
  std::filesystem::create_symlink("/nowhere", logs_ + "/Vantory.dangling.log");
  std::filesystem::create_directory_symlink(desktop_, logs_ + "/Vantory.folder.log");
  ASSERT_EQ(mkfifo((logs_ + "/Vantory.pipe.log").c_str(), 0600), 0);
  writeFile(logs_ + "/Vantory.huge.log", "");
  std::filesystem::resize_file(logs_ + "/Vantory.huge.log", std::uintmax_t{1} << 40);
  writeFile(machine_ / "Library/Logs/CrashReporter/Vantory_1.crash", "crash");
  writeFile(home_ / "Library/Preferences/com.quarrywell.vantory.plist", "settings");
  writeFile(home_ / "Library/Preferences/com.quarrywell.global.plist", "not asked for");
  writeFile(home_ / "extra file", "extra");
  writeFile(desktop_ + "/Vantory Logs.zip", "an older one");

  EXPECT_TRUE(QWTroubleshootingUtils::gatherLogsForAppsWithNames({"Vantory"}, false, {home_ / "extra file"}));
  EXPECT_THAT(alerts_, ElementsAre("Logs gathered successfully: The gathered logs were placed on your desktop. "
                                   "3 of the files could not be read; the log names them."));
  const std::vector<std::string> messages = logged();
  for (const char* name : {"dangling", "pipe", "huge"})
    EXPECT_THAT(messages, Contains(HasSubstr("Unable to copy log: " + logs_ + "/Vantory." + name)));
  EXPECT_EQ(readFile(desktop_ + "/Vantory Logs.zip"), "an older one");
  ASSERT_THAT(onDesktop(), testing::SizeIs(2));
  EXPECT_TRUE(leftNothing());

  const std::string gathered = unpacked(desktop_ + "/Vantory Logs_20261114213517.zip");
  EXPECT_EQ(readFile(gathered + logs_ + "/Vantory linked.log"), "linked");
  EXPECT_EQ(readFile(gathered + (machine_ / "Library/Logs/CrashReporter/Vantory_1.crash")), "crash");
  EXPECT_EQ(readFile(gathered + (home_ / "extra file")), "extra");
  int count = 0;
  for (const auto& entry : std::filesystem::recursive_directory_iterator(gathered)) count += entry.is_regular_file();
  EXPECT_EQ(count, 5);  // and the log and the settings
}

TEST_F(SupportTest, AFailedGatheringSaysWhyAndLeavesNothing) {
  EXPECT_FALSE(gather());
  writeFile(logs_ + "/Vantory.1.log", "log");
  std::filesystem::remove(desktop_);
  EXPECT_FALSE(gather());
  EXPECT_THAT(alerts_,
              ElementsAre("No logs found: There were no logs available to gather.",
                          "Logs could not be gathered: Please check your file permissions. There is no folder " +
                              desktop_ + "."));
  makeFolders(desktop_);
  // The only log cannot be read, and the last step fails.
  for (const auto& [step, code] : {std::pair{Operation::StageCopy, std::errc::permission_denied},
                                   {Operation::Move, std::errc::no_space_on_device}}) {
    files_.heal();
    files_.fail(step, code);
    EXPECT_FALSE(gather());
  }
  EXPECT_THAT(alerts_, testing::SizeIs(4));
  EXPECT_THAT(onDesktop(), IsEmpty());
  EXPECT_TRUE(leftNothing());
}

TEST_F(SupportTest, OpensALogThatIsThere) {
  QWTroubleshootingUtils::viewLogForApp("Vantory");
  QWTroubleshootingUtils::viewTaskLogForApp("Vantory");
  EXPECT_THAT(alerts_, ElementsAre("No log found: You must perform a task before viewing the log.",
                                   "No log found: You must run the application as a task (e.g. through Jobwheel) "
                                   "before viewing a log."));
  writeFile(logs_ + "/Vantory.1.log", "log");
  QWTroubleshootingUtils::viewLogForApp("Vantory");
  writeFile(logs_ + "/Vantory.task.1.log", "log");
  QWTroubleshootingUtils::viewTaskLogForApp("Vantory");
  EXPECT_THAT(fakes_.documents.opened, ElementsAre(logs_ + "/Vantory.1.log", logs_ + "/Vantory.task.1.log"));
}

TEST_F(SupportTest, TheNewerUpdateApplicationIsOpened) {
  const std::string name = "Quarrywell Software Update.app";
  const std::string installed = machine_ / ("Applications/Quarrywell/" + name);
  const auto install = [](const std::string& application, const std::string& version) {
    writeFile(application + "/Contents/Info.plist",
              "{CFBundleVersion = \"" + version + "\"; CFBundleIdentifier = \"id" + version + "\";}");
  };
  fakes_.system.resources = machine_ / "resources";
  install(fakes_.system.resources + "/" + name, "10");
  install(installed, "9");
  QWSoftwareUpdate().manualUpdateCheck();
  EXPECT_EQ(QWSoftwareUpdate::updaterPath(), home_ / ("Library/Caches/com.quarrywell.Vantory/" + name));
  install(installed, "10");
  EXPECT_EQ(QWSoftwareUpdate::updaterPath(), installed);
  EXPECT_THAT(fakes_.workspace.launched, ElementsAre("id10"));
}

}  // namespace
}  // namespace vantory::test
