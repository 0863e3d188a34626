#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>

#include "platform/macos/session/MacDesktop.h"
#include "platform/macos/session/UserFiles.h"
#include "platform/posix/processes/PosixProcesses.h"
#include "tests/darwin/Volume.h"
#include "tests/platform/StandInTools.h"
#include "tests/support/FakePlatform.h"

namespace vantory::test {
namespace {

class MacDesktopTest : public ::testing::Test {
 protected:
  MacDesktopTest() { users_.process = User{getuid(), getgid(), scratch_.path()}; }
  ~MacDesktopTest() override {
    for (const auto& process : started_) {
      process->terminate();
      process->wait();
    }
  }
  void describe(const std::string& bundle, const std::string& identifier) const {
    writeFile(scratch_ / (bundle + "/Contents/Info.plist"),
              "<plist><dict><key>CFBundleIdentifier</key><string>" + identifier +
                  "</string><key>CFBundleExecutable</key><string>Main</string></dict></plist>");
  }
  // Runs from then on.
  void start(const std::string& program) {
    const std::string path = scratch_ / program;
    makeFolders(path.substr(0, path.rfind('/')));
    std::filesystem::copy_file("/bin/sleep", path, std::filesystem::copy_options::overwrite_existing);
    auto process = PosixProcesses().start(path, {"60"}, Streams::Discarded);
    ASSERT_TRUE(process);
    started_.push_back(std::move(*process));
  }

  StandInTools tools_;
  ScratchFolder scratch_;
  FakeUsers users_;
  std::optional<PreferencesDaemon> daemon_{std::in_place, users_};
  UserFiles files_{*daemon_};
  MacWorkspace workspace_{files_, users_, *daemon_};
  std::vector<std::unique_ptr<Process>> started_;
};

TEST_F(MacDesktopTest, AScriptIsRunAsItIs) {
  tools_.put("/usr/bin/osascript", "");
  ASSERT_TRUE(workspace_.runScript("tell application \"Motion\" to activate"));
  EXPECT_EQ(tools_.calls(), "osascript -e tell application \"Motion\" to activate\n");
  tools_.put("/usr/bin/osascript", "echo 'not allowed to send keystrokes. (1002)' >&2; exit 1");
  EXPECT_THAT(workspace_.runScript("x").error().text, ::testing::HasSubstr("(1002)"));
}

TEST_F(MacDesktopTest, AnApplicationRunsWhereItsMainProgramDoes) {
  tools_.answer("");
  describe("Final Cut Pro.app", "com.example.FinalCut");
  describe("Final Cut Pro.app/Contents/Helper.app", "com.example.Helper");
  start("Final Cut Pro.app/Contents/MacOS/Other");
  start("Final Cut Pro.app/Contents/Helper.app/Contents/MacOS/Main");
  EXPECT_FALSE(*workspace_.isRunning("com.example.FinalCut"));
  EXPECT_TRUE(*workspace_.isRunning("com.example.Helper"));
  EXPECT_EQ(workspace_.activateApplication("com.example.FinalCut").error().code, std::errc::no_such_process);
  ASSERT_TRUE(workspace_.quitApplication("", "com.example.FinalCut"));
  EXPECT_EQ(tools_.calls(), "") << "nobody is asked, and nothing started, where none runs";

  start("Final Cut Pro.app/Contents/MacOS/Main");
  describe("Copy.app", "com.example.FinalCut");
  start("Copy.app/Contents/MacOS/Main");
  EXPECT_TRUE(*workspace_.isRunning("com.example.FinalCut"));
  EXPECT_FALSE(*workspace_.isRunning("com.example.finalcut"));
  ASSERT_TRUE(workspace_.quitApplication("", "com.example.FinalCut"));
  EXPECT_THAT(tools_.calls(), ::testing::MatchesRegex("osascript quit [0-9]+ [0-9]+\n")) << "each copy";
  tools_.answer("echo 'execution error: no (-1743)' >&2; exit 1");
  EXPECT_EQ(workspace_.quitApplication("", "com.example.FinalCut").error().code, std::errc::operation_not_supported);

  std::filesystem::remove(scratch_ / "Copy.app/Contents/Info.plist");
  EXPECT_TRUE(*workspace_.isRunning("com.example.FinalCut"));
  std::filesystem::remove(scratch_ / "Final Cut Pro.app/Contents/Info.plist");
  EXPECT_FALSE(workspace_.isRunning("com.example.FinalCut").ok()) << "it may be this one";
  EXPECT_FALSE(*workspace_.isRunning("com.example.Motion"));
}

TEST_F(MacDesktopTest, NothingIsTakenForAnOptionOfATool) {
  tools_.put("/usr/bin/open", "");
  MacDocuments documents;
  EXPECT_TRUE(documents.reveal({"/a", "/b"}));
  EXPECT_FALSE(documents.reveal({"/a", "-x"}));
  EXPECT_FALSE(documents.open("file:///etc"));
  EXPECT_FALSE(workspace_.openFile("-x", "com.example.App"));
  EXPECT_EQ(tools_.calls(), "open -R /a /b\n");
}

TEST_F(MacDesktopTest, PreferencesAreKnownUnderAnyNameOfTheirs) {
  tools_.put("/usr/bin/killall", "");
  users_.process->home = scratch_ / "Users/Zo\u00eb";
  darwin::volume().findsAnyForm = true;
  const std::string home = scratch_ / "users/Zoe\u0308/";
  writeFile(scratch_ / "Users/Zo\u00eb/Library/Preferences/a.plist", "");
  writeFile(scratch_ / "Users/Zo\u00eb/Library/Containers/x/Data/Library/Preferences/b.plist", "");
  daemon_->beforeReading(home + "library/containers/x/data/library/a.plist");
  daemon_->beforeReading(home + "library/b.plist");
  EXPECT_EQ(tools_.calls(), "");
  daemon_->beforeReading(home + "library/preferences/a.plist");
  EXPECT_EQ(tools_.calls(), "killall -u anna cfprefsd\n");
  daemon_->beforeChange(home + "library/containers/x/data/library/preferences/new.plist");
  daemon_->forgetChanged();
  EXPECT_EQ(tools_.calls(), "killall -u anna cfprefsd\nkillall -u anna cfprefsd\n");
  darwin::volume() = {};
}

TEST_F(MacDesktopTest, PreferencesThatAreReplacedAreReadAnew) {
  const std::string calls = "killall -u anna cfprefsd\n";
  tools_.put("/usr/bin/killall", "");
  tools_.put("/usr/bin/open", "");
  tools_.answer("");
  const std::string file = scratch_ / "Library/Preferences/com.example.App.plist";
  const std::string other = scratch_ / "Library/Containers/com.example.App/Data/Library/Preferences/x.plist";
  for (const std::string& each : {file, other, scratch_ / "saved"}) writeFile(each, "");
  ASSERT_TRUE(files_.stageCopy({.source = scratch_ / "saved", .destination = scratch_ / "copy"}));
  EXPECT_EQ(tools_.calls(), "");
  ASSERT_TRUE(files_.stageCopy({.source = file, .destination = scratch_ / "copy"}));
  ASSERT_TRUE(files_.stageCopy({.source = other, .destination = scratch_ / "copy"}));
  EXPECT_EQ(tools_.calls(), calls) << "once for all files";
  daemon_->forgetChanged();
  EXPECT_EQ(tools_.calls(), calls) << "nothing was changed";

  daemon_->applicationEnds();
  ASSERT_TRUE(files_.trash(file, scratch_ / ".Trash"));
  ASSERT_TRUE(files_.remove(other));
  EXPECT_EQ(tools_.calls(), calls + calls) << "what it was handed at the end of an application is written first";
  ASSERT_TRUE(workspace_.launchApplication("com.example.App"));
  EXPECT_EQ(tools_.calls(), calls + calls + calls + "open -b com.example.App\n");
  ASSERT_TRUE(files_.write(other, "", {}));
  daemon_->forgetChanged();
  const std::string sofar = calls + calls + calls + "open -b com.example.App\n" + calls;
  EXPECT_EQ(tools_.calls(), sofar) << "the program's own settings, too";
  ASSERT_TRUE(files_.move(scratch_ / "saved", file));
  daemon_.reset();
  EXPECT_EQ(tools_.calls(), sofar + calls) << "at the end at the latest";
}

}  // namespace
}  // namespace vantory::test
