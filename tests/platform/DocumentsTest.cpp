// Showing, opening and mailing files, with stand-ins for the programs that do it.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

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

class DocumentsTest : public ::testing::Test {
 protected:
  // Writes its arguments to a file, each followed by "|".
  std::string recorder(const std::string& name, const std::string& end = "") {
    return desktop_.script(name, "#!/bin/sh\nprintf '%s|' \"$@\" > $HOME/new\nmv $HOME/new $HOME/given\n" + end + "\n");
  }
  std::string given() {
    return soon([this] { return exists(desktop_ / "given"); }) ? readFile(desktop_ / "given") : "nothing";
  }
  void openFoldersWithRecorder() {
    desktop_.declare("org.example.Files", recorder("bin/files") + " %f", "MimeType=inode/directory;\n");
    writeFile(desktop_ / ".config/mimeapps.list",
              "[Default Applications]\ninode/directory=org.example.Files.desktop\n");
  }

  DesktopFolders desktop_;
  FakeUsers users_;
  DesktopHelper helper_{[this] { return desktopHelperProgram(users_); }};
  LinuxDocuments documents_{helper_};
};

TEST_F(DocumentsTest, OneThatRefusesIsGivenTheFolder) {
  if (const std::string reason = SessionBus::missing(); !reason.empty()) GTEST_SKIP() << reason;
  const SessionBus bus;
  const HelperProcess manager = bus.start("file_manager.py", {"refuse"});
  openFoldersWithRecorder();
  makeFolders(desktop_ / "Auto saves");
  EXPECT_TRUE(documents_.reveal({desktop_ / "Auto saves/1.vnt", desktop_ / "Auto saves/2.vnt"}));
  EXPECT_EQ(given(), desktop_ / "Auto saves|");
}

TEST_F(DocumentsTest, ItIsSaidWhyNothingIsMailed) {
  recorder("bin/xdg-email", "exit 3");
  EXPECT_THAT(documents_.mail("/tmp/a.zip").error().text, HasSubstr("No mail program is installed."));
}

}  // namespace
}  // namespace vantory::test
