#include <gtest/gtest.h>
#include <pwd.h>

#include "platform/linux/system/LinuxStandardFolders.h"
#include "platform/macos/files/MacFileSystem.h"
#include "platform/macos/system/MacCrashReports.h"
#include "platform/macos/system/MacStandardFolders.h"
#include "platform/macos/system/MacSystemTools.h"
#include "platform/macos/system/MacUsers.h"
#include "tests/support/EnvironmentChange.h"
#include "tests/support/ScratchFolder.h"

namespace vantory::test {
namespace {

std::string whoIsAtConsole(const std::optional<std::string>& owner) {
  const EnvironmentChange console("VANTORY_TEST_CONSOLE", owner);
  const MacUsers users;
  const std::optional<User> user = users.consoleUser();
  return user ? users.nameOf(*user) : "nobody";
}

TEST(MacUsersTest, OnlyAPersonIsAtTheConsole) {
  EXPECT_EQ(whoIsAtConsole("1"), "daemon");
  EXPECT_EQ(whoIsAtConsole(std::nullopt), "nobody");
  EXPECT_EQ(whoIsAtConsole("0"), "nobody");
  EXPECT_EQ(whoIsAtConsole("4000000"), "nobody");
  const passwd* service = getpwnam("_apt");
  if (!service) GTEST_SKIP() << "no account here is called like the system's";
  EXPECT_EQ(whoIsAtConsole(std::to_string(service->pw_uid)), "nobody");
}

TEST(MacFoldersTest, BackupsOfLinuxFit) {
  const MacStandardFolders mac("/root");
  const LinuxStandardFolders other("/root", true);
  for (const StandardFolder folder : {StandardFolder::Applications, StandardFolder::Library, StandardFolder::Caches,
                                      StandardFolder::Documents, StandardFolder::SharedUsers}) {
    EXPECT_EQ(mac.userFolder(folder, "/home"), other.userFolder(folder, "/home"));
    EXPECT_EQ(mac.localFolder(folder), other.localFolder(folder));
  }
  EXPECT_EQ(mac.userFolder(StandardFolder::Trash, "/home"), "/home/.Trash");
}

TEST(MacSystemToolsTest, WhatTheFinderIsToShowIsNoPartOfTheScript) {
  const auto call = MacSystemTools().refreshView("/a\" & \"b");
  ASSERT_TRUE(call);
  EXPECT_EQ(call->tool, "/usr/bin/osascript");
  ASSERT_EQ(call->arguments.size(), 3u);
  EXPECT_EQ(call->arguments[0] + call->arguments[2], "-e/a\" & \"b");
}

TEST(MacCrashReportsTest, ThoseOfHelpersAreNotTheProgramsOwn) {
  const ScratchFolder home;
  const EnvironmentChange own("HOME", home.path());
  const EnvironmentChange console("VANTORY_TEST_CONSOLE", std::nullopt);
  const MacFileSystem files;
  class : public MacUsers {
    bool isSuperuser() const override { return false; }
  } users;
  const MacStandardFolders folders;
  const MacCrashReports reports(files, users, folders);
  const std::string folder = home / "Library/Logs/DiagnosticReports/";
  for (const char* name : {"vantory-desktop-2026-11-14-213517.ips", "vantory-.ips", "final-2026.ips"})
    writeFile(folder + name, "");
  EXPECT_EQ(reports.newestSince({}), std::nullopt);
  const std::string report = folder + "Retired/vantory-2026-11-14-213517.ips";
  writeFile(report, "");
  EXPECT_EQ(reports.newestSince({}), report);
  EXPECT_EQ(reports.newestSince({1LL << 40, 0}), std::nullopt);
}

}  // namespace
}  // namespace vantory::test
