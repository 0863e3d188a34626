// What only a Mac's disk does, on an emulation of its calls.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <algorithm>

#include "base/Paths.h"
#include "platform/StagingName.h"
#include "platform/macos/darwin/Darwin.h"
#include "platform/macos/files/MacFileMetadata.h"
#include "platform/macos/files/MacFileSystem.h"
#include "tests/darwin/Volume.h"
#include "tests/support/ScratchFolder.h"

namespace vantory::test {
namespace {

class MacFilesTest : public testing::TestWithParam<bool> {
 protected:
  MacFilesTest() { darwin::volume() = {.clones = GetParam()}; }
  ~MacFilesTest() override { darwin::volume() = {}; }

  Status copy(const std::string& from, const std::string& to, StagedCopy::Existing existing) {
    auto staged = files.stageCopy({folder / from, folder / to, {}, Links::DoNotFollow});
    return staged ? (*staged)->commit(existing) : staged.error();
  }
  static void set(const std::string& path, const std::string& name, const std::string& value) {
    ASSERT_EQ(setxattr(path.c_str(), ("user." + name).c_str(), value.data(), value.size(), 0), 0);
  }
  static std::string get(const std::string& path, const std::string& name) {
    std::string value(1000, '\0');
    const ssize_t length = getxattr(path.c_str(), ("user." + name).c_str(), value.data(), value.size());
    return length < 0 ? "none" : value.substr(0, static_cast<std::size_t>(length));
  }

  ScratchFolder folder;
  MacFileSystem files;
  MacFileMetadata metadata;
};

INSTANTIATE_TEST_SUITE_P(OnAVolumeThat, MacFilesTest, testing::Bool(),
                         [](const auto& info) { return info.param ? "Clones" : "Copies"; });

TEST_P(MacFilesTest, KeepsWhatBelongsToAFileButItsLockAndWhatTheFolderLetsIn) {
  writeFile(folder / "from/file", "content");
  set(folder / "from/file", "com.apple.ResourceFork", "fork");
  set(folder / "from/file", "com.apple.quarantine", "0081");
  set(folder / "from/file", "darwin.list", "anna reads");
  makeFolders(folder / "to");
  set(folder / "to", "darwin.inherited", "everybody writes");
  ASSERT_EQ(chmod((folder / "from/file").c_str(), 0640), 0);
  ASSERT_TRUE(metadata.setLocked(folder / "from/file", true).ok());
  ASSERT_TRUE(copy("from/file", "to/file", StagedCopy::Existing::Keep).ok());
  ASSERT_TRUE(copy("from", "to/tree", StagedCopy::Existing::Keep).ok());
  for (const char* name : {"to/file", "to/tree/file"}) {
    const auto info = files.info(folder / name, Links::DoNotFollow);
    ASSERT_TRUE(info.ok());
    EXPECT_FALSE(info->locked);
    EXPECT_EQ(info->modified, files.info(folder / "from/file", Links::DoNotFollow)->modified);
    EXPECT_EQ(readFile(folder / name), "content");
    EXPECT_EQ(get(folder / name, "com.apple.ResourceFork"), "fork");
    EXPECT_EQ(get(folder / name, "com.apple.quarantine"), "0081");
    EXPECT_EQ(get(folder / name, "darwin.list"), "anna reads");
  }
  EXPECT_EQ(get(folder / "to/tree", "darwin.list"), "none");
}

TEST_P(MacFilesTest, TellsWhatPrivacySettingsKeepFromIt) {
  writeFile(folder / "guarded/file", "");
  ASSERT_TRUE(metadata.setLocked(folder / "guarded/file", true).ok());
  ASSERT_TRUE(files.read(folder / "guarded/file").ok());
  ASSERT_TRUE(metadata.setLocked(folder / "guarded/file", false).ok());
  set(folder / "guarded", "darwin.guarded", "");
  const auto isToldOf = [&](const Error& error) {
    return error.text.starts_with(folder / "guarded: macOS does not let") && !error.cure.empty() &&
           error.consentMissing && !rightsCouldHelp(error);
  };
  EXPECT_TRUE(isToldOf(files.list(folder / "guarded", Detail::Names).error()));
  EXPECT_TRUE(isToldOf(copy("guarded", "copy", StagedCopy::Existing::Keep).error()));
  EXPECT_TRUE(isToldOf(files.stageCopy({folder.path(), folder.path() + "-copy", {}, Links::DoNotFollow}).error()));
  EXPECT_TRUE(files.move(folder / "guarded/file", folder / "file").status().error().consentMissing);
  // What owner, mode or a lock forbid, no consent allows.
  set(folder / "guarded/file", "darwin.guarded", "");
  ASSERT_EQ(chmod((folder / "guarded/file").c_str(), 0), 0);
  EXPECT_EQ(files.read(folder / "guarded/file").error().consentMissing, geteuid() == 0);
  ASSERT_EQ(chmod((folder / "guarded/file").c_str(), 0600), 0);
  ASSERT_TRUE(metadata.setLocked(folder / "guarded/file", true).ok());
  EXPECT_FALSE(files.move(folder / "guarded/file", folder / "file").status().error().consentMissing);
  ASSERT_TRUE(metadata.setLocked(folder / "guarded/file", false).ok());
}

// A clone is locked for a moment; a process that is killed then leaves it so.
TEST_P(MacFilesTest, ClearsWhatAKilledProcessLeftLocked) {
  const std::string left = stagingName("copy");
  writeFile(folder / "file", "content");
  writeFile((folder / "to/file/") + left, "half");
  ASSERT_TRUE(metadata.setLocked((folder / "to/file/") + left, true).ok());
  writeFile((folder / "to/tree/") + left + "/sub/file", "half");
  for (const char* name : {"file", "tree"}) {
    const std::string to = (folder / "to/") + name;
    ASSERT_TRUE(files.stageCopy({folder / "file", to + "/copy", {}, Links::DoNotFollow}).ok());
    EXPECT_TRUE(files.list(to, Detail::Names)->empty()) << name;
  }
}

TEST_P(MacFilesTest, WhatIsToLastIsOnTheMediumInOrder) {
  ASSERT_TRUE(files.write(folder / "settings", "new", {.durable = true}).ok());
  EXPECT_EQ(darwin::volume().flushes, (std::vector<std::string>{"order", "drive"}));
  ASSERT_TRUE(files.sync(folder.path()).ok());
  EXPECT_EQ(darwin::volume().flushes.back(), "volume");
}

TEST_P(MacFilesTest, GivesTrashedItemsNamesThatAreFree) {
  const std::string trash = folder / ".Trash";
  std::vector<std::string> places;
  for (int i = 0; i < 4; ++i) {
    writeFile(folder / "a.plist", std::to_string(i));
    const auto trashed = files.trash(folder / "a.plist", trash);
    ASSERT_TRUE(trashed.ok()) << trashed.error().text;
    EXPECT_EQ(readFile(trashed->place), std::to_string(i));
    EXPECT_TRUE(trashed->place.ends_with(".plist"));
    places.push_back(trashed->place);
  }
  EXPECT_EQ(places.front(), trash + "/a.plist");
  EXPECT_EQ(files.list(trash, Detail::Names)->size(), 4u);
}

TEST_P(MacFilesTest, NotesOfTheFinderTellAPackage) {
  makeFolders(folder / "Shown as one");
  std::string notes(32, '\0');
  EXPECT_EQ(metadata.finderInfo(folder / "Shown as one").value(), notes);
  EXPECT_FALSE(metadata.isPackage(folder / "Shown as one"));
  notes[8] = 0x20;
  ASSERT_TRUE(metadata.setFinderInfo(folder / "Shown as one", notes).ok());
  EXPECT_TRUE(metadata.isPackage(folder / "Shown as one"));
  ASSERT_TRUE(metadata.setFinderInfo(folder / "Shown as one", std::string(32, '\0')).ok());
  EXPECT_EQ(get(folder / "Shown as one", "com.apple.FinderInfo"), "none");
}

}  // namespace
}  // namespace vantory::test
