// Default applications, read back as other programs read them.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>

#include "platform/linux/session/LinuxDesktop.h"
#include "tests/support/DesktopFolders.h"
#include "tests/support/FakePlatform.h"

namespace vantory::test {
namespace {

using ::testing::HasSubstr;

namespace fs = std::filesystem;

constexpr const char* kVantory = "com.quarrywell.Vantory";
constexpr const char* kFinalCut = "com.apple.FinalCutPro";
constexpr const char* kType = "application/x-vantory-fcp";

class DefaultHandlersTest : public ::testing::Test {
 protected:
  void SetUp() override {
    for (const char* tool : {"/usr/bin/gio", "/usr/bin/xdg-mime", "/usr/bin/update-mime-database"})
      if (!exists(tool)) GTEST_SKIP() << tool << " is not installed";
    desktop_.declare(kVantory, "/usr/bin/true %f", std::string("MimeType=") + kType + ";\n");
    desktop_.declare(kFinalCut, "/usr/bin/true %f", std::string("MimeType=") + kType + ";\n");
  }

  // What the tool prints.
  std::string run(std::vector<std::string> words) {
    for (const char* name : {"HOME", "XDG_DATA_HOME", "XDG_DATA_DIRS", "XDG_CONFIG_HOME", "XDG_CONFIG_DIRS"})
      words.insert(words.begin(), std::string(name) + "=" + std::getenv(name));
    auto process = PosixProcesses().start("/usr/bin/env", words, Streams::OutputCaptured);
    return process ? (*process)->readAll().output : process.error().text;
  }
  std::string list() { return readFile(desktop_ / ".config/mimeapps.list"); }

  DesktopFolders desktop_;
  FakeUsers users_;
  LinuxDefaultHandlers handlers_{users_};
};

TEST_F(DefaultHandlersTest, OtherProgramsReadWhatIsSet) {
  EXPECT_EQ(*handlers_.typeOfExtension("fcp"), kType);
  EXPECT_FALSE(exists(desktop_ / ".local/share/mime")) << "asking declares nothing";
  for (const auto& [handler, entry] :
       {std::pair("com.apple.finalcutpro", kFinalCut), {"com.quarrywell.vantory", kVantory}}) {
    const Status set = handlers_.setDefaultViewer(kType, handler);
    ASSERT_TRUE(set) << set.error().text;
    EXPECT_EQ(handlers_.defaultViewer(kType), handler);
    EXPECT_THAT(run({"gio", "mime", kType}), HasSubstr(std::string(": ") + entry + ".desktop\n"));
    EXPECT_EQ(run({"xdg-mime", "query", "default", kType}), std::string(entry) + ".desktop\n");
  }
  // Projects are declared for the user.
  writeFile(desktop_ / "MY FILM.FCP", "data");
  EXPECT_THAT(run({"gio", "info", "-a", "standard::content-type", desktop_ / "MY FILM.FCP"}), HasSubstr(kType));
  EXPECT_EQ(*handlers_.typeOfExtension("txt"), "text/plain");
  EXPECT_EQ(handlers_.typeOfExtension("no-such-extension").error().code, std::errc::no_such_file_or_directory);
}

// The program's own entry and declaration, as they are installed.
TEST_F(DefaultHandlersTest, TheProgramsEntryNamesEveryKindOfProject) {
  if (!exists("/usr/bin/update-desktop-database")) GTEST_SKIP() << "desktop-file-utils is not installed";
  fs::copy_file(std::string(VANTORY_RESOURCES) + "/com.quarrywell.Vantory.desktop", desktop_.entry(kVantory),
                fs::copy_options::overwrite_existing);
  desktop_.script("bin/vantory", "#!/bin/sh\n");
  fs::remove(desktop_.entry(kFinalCut));
  run({"update-desktop-database", desktop_ / ".local/share/applications"});
  for (const std::string extension : {"fcp", "stap", "stmp", "motn", "ipr", "dspproj", "compressor", "colorproj"}) {
    const Result<std::string> type = handlers_.typeOfExtension(extension);
    ASSERT_TRUE(type) << extension;
    EXPECT_EQ(handlers_.defaultViewer(*type), "com.quarrywell.vantory") << extension;
  }
  ASSERT_TRUE(handlers_.setDefaultViewer(kType, kFinalCut));
  EXPECT_EQ(handlers_.defaultViewer(kType), std::nullopt) << "the choice is not installed";
}

TEST_F(DefaultHandlersTest, OnlyTheOneEntryOfTheListChanges) {
  const std::string real = desktop_ / "dotfiles/mimeapps.list";
  writeFile(real, "# by hand\n\n[Added Associations]\ntext/plain=a.desktop;b.desktop;\n\n[Default Applications]\n" +
                      std::string(kType) + "=gone.desktop;\ntext/plain=foo.desktop;\n\n[X Unknown]\nk[de]=v\\sw\n");
  chmod(real.c_str(), 0640);
  fs::create_symlink(real, desktop_ / ".config/mimeapps.list");
  ASSERT_TRUE(handlers_.setDefaultViewer(kType, kFinalCut));
  EXPECT_EQ(list(), "# by hand\n\n[Added Associations]\ntext/plain=a.desktop;b.desktop;\n\n[Default Applications]\n" +
                        std::string(kType) +
                        "=com.apple.FinalCutPro.desktop\ntext/plain=foo.desktop;\n\n[X Unknown]\n"
                        "k[de]=v\\sw\n");
  EXPECT_TRUE(fs::is_symlink(desktop_ / ".config/mimeapps.list"));
  struct stat status {};
  stat(real.c_str(), &status);
  EXPECT_EQ(status.st_mode & 0777U, 0640U);
}

TEST_F(DefaultHandlersTest, AListThatCannotBeUnderstoodOrWrittenIsLeftAlone) {
  writeFile(desktop_ / ".config/mimeapps.list", "text/plain=foo.desktop\n[[");
  EXPECT_FALSE(handlers_.setDefaultViewer(kType, kFinalCut));
  EXPECT_EQ(list(), "text/plain=foo.desktop\n[[");
  if (getuid() == 0) GTEST_SKIP() << "the superuser may write everywhere";
  writeFile(desktop_ / ".config/mimeapps.list", "[Default Applications]\n");
  chmod((desktop_ / ".config/mimeapps.list").c_str(), 0400);
  EXPECT_FALSE(handlers_.setDefaultViewer(kType, kFinalCut));
  EXPECT_EQ(list(), "[Default Applications]\n");
}

}  // namespace
}  // namespace vantory::test
