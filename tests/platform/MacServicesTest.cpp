#include <gtest/gtest.h>

#include "platform/linux/system/LinuxStandardFolders.h"
#include "platform/macos/system/MacStandardFolders.h"
#include "platform/macos/system/MacSystemTools.h"

namespace vantory::test {
namespace {

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

}  // namespace
}  // namespace vantory::test
