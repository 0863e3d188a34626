// What restoring a backup would change.
#include "backups/comparison/Comparison.h"

#include <sys/stat.h>

#include <fstream>

#include "backups/BackupFolder.h"
#include "backups/comparison/PartialRestore.h"
#include "base/PropertyListBytes.h"
#include "catalog/FileRestoring.h"
#include "tests/backups/BackupsTest.h"

namespace vantory::test {
namespace {

namespace fs = std::filesystem;

class ComparisonTest : public BackupsTest {
 protected:
  std::shared_ptr<QWBackup> write(const std::string& name) {
    EXPECT_EQ(backupOfAll(name)->writeData(report_), WriteResult::Success);
    return QWBackup::backupWithFile(inLibrary(name + ".vnt"));
  }
  std::string live(const std::string& name) const { return prefs("Folder/" + name); }
  // A catalog of one file, single files by pattern, and a folder.
  void setWideCatalog() {
    setCatalog({{"A", {prefs("editor.plist")}}, {"B", {prefs("*.layout")}}, {"C", {prefs("Folder")}}});
  }

  // "name: difference" of each file that is not the same.
  static std::vector<std::string> told(const Comparison& comparison) {
    std::vector<std::string> lines;
    for (const ItemComparison& item : comparison.items)
      for (const FileComparison& file : item.files)
        lines.push_back(fs::path(file.path).filename().string() + ": " + nameOf(file.difference));
    return lines;
  }
};

TEST_F(ComparisonTest, SaysOfEachFileWhatARestoreWouldDo) {
  setWideCatalog();
  for (const char* name : {"editor.plist", "a.layout", "gone.layout", "Folder/same", "Folder/touched", "Folder/gone"})
    writeFile(prefs(name), "saved");
  writeFile(live("sub/changed"), "saved");
  const auto backup = write("B");
  EXPECT_THAT(told(compareBackups({.after = backup})), IsEmpty());

  writeFile(prefs("new.layout"), "x");
  writeFile(live("new"), "x");
  writeFile(live("sub/changed"), "other");
  fs::last_write_time(live("touched"), fs::file_time_type::clock::now() + std::chrono::hours(1));
  fs::remove(prefs("gone.layout"));
  fs::remove(live("gone"));
  const Comparison comparison = compareBackups({.after = backup});
  EXPECT_THAT(told(comparison), ElementsAre("gone.layout: added", "new.layout: kept", "gone: added", "new: removed",
                                            "changed: different"));
  EXPECT_EQ(comparison.count(Difference::Same), 4U);
  EXPECT_THAT(told(compareBackups({.after = backup, .items = {{"keyB"}}})),
              ElementsAre("gone.layout: added", "new.layout: kept"));

  backup->restore(report_);
  for (const char* name : {"gone.layout", "Folder/gone", "new.layout"}) EXPECT_TRUE(fs::exists(prefs(name))) << name;
  EXPECT_FALSE(fs::exists(live("new")));
  EXPECT_THAT(told(compareBackups({.after = backup})), ElementsAre("new.layout: kept"));
}

TEST_F(ComparisonTest, ComparesKeysLinesAndTwoBackups) {
  setWideCatalog();
  writeFile(prefs("editor.plist"), "{ Snapping = 0; }");
  writeFile(live("notes"), "one\ntwo\n");
  const auto first = write("First");
  writeFile(prefs("editor.plist"), "{ Snapping = 1; }");
  writeFile(live("notes"), "one\n2\n");
  writeFile(live("huge"), std::string(5 * 1024 * 1024, 'x'));
  const auto second = write("Second");
  writeFile(live("huge"), std::string(5 * 1024 * 1024, 'y'));
  EXPECT_THAT(told(compareBackups({.after = second})), ElementsAre("huge: different"));

  const Comparison comparison = compareBackups({.before = second, .after = first});
  EXPECT_THAT(told(comparison), ElementsAre("editor.plist: different", "huge: removed", "notes: different"));
  const auto& keys = comparison.items.front().files.front().keys;
  ASSERT_EQ(keys.size(), 1U);
  EXPECT_EQ(keyPathText(keys[0].path) + ": " + changeInShort(keys[0]), "Snapping: \"1\" → \"0\"");
  EXPECT_EQ(comparison.items.back().files.back().lines.size(), 2U);
}

TEST_F(ComparisonTest, NothingHostileIsFollowedOrWaitedFor) {
  setWideCatalog();
  for (const char* name : {"editor.plist", "Folder/a", "Folder/pipe", "Folder/link"}) writeFile(prefs(name), "x");
  const auto backup = write("B");
  const std::string kept = backup->path() + BackupFolder(backup->path()).safeUserPath(prefs("Folder"));
  fs::remove(kept + "/pipe");
  ASSERT_EQ(mkfifo((kept + "/pipe").c_str(), 0600), 0);
  fs::remove(kept + "/link");
  fs::create_symlink(live("a"), kept + "/link");
  EXPECT_THAT(told(compareBackups({.after = backup})), ElementsAre("link: different", "pipe: unreadable"));

  // One that a restore takes by its pattern is refused there.
  fs::remove(kept + "/../editor.plist");
  fs::create_symlink("/etc/hosts", kept + "/../editor.plist");
  const auto linked = compareBackups({.after = backup, .items = {{"keyA"}}});
  EXPECT_THAT(linked.items.at(0).files.at(0).remark, HasSubstr("a symbolic link to /etc/hosts, which a restore"));
  fs::remove(kept + "/../editor.plist");
  writeFile(kept + "/../editor.plist", "x");

  // A present file that is a link is what it leads to, but a restore would replace the link.
  fs::rename(prefs("editor.plist"), home_ / "dotfile");
  fs::create_symlink(home_ / "dotfile", prefs("editor.plist"));
  EXPECT_THAT(told(compareBackups({.after = backup, .items = {{"keyA"}}})), ElementsAre("editor.plist: different"));

  // The whole folder of preferences now lies outside of the backup.
  const std::string folder = fs::path(kept).parent_path();
  fs::rename(folder, home_ / "elsewhere");
  fs::create_symlink(home_ / "elsewhere", folder);
  for (const std::string& line : told(compareBackups({.after = backup})))
    EXPECT_THAT(line, testing::EndsWith("unreadable"));
}

TEST_F(ComparisonTest, EndsWhenItIsToldTo) {
  setWideCatalog();
  for (int i = 0; i < 10; ++i) writeFile(live("f" + std::to_string(i)), "x");
  const auto backup = write("B");
  const Comparison comparison =
      compareBackups({.after = backup, .observer = [](std::size_t files) { return files < 3; }});
  EXPECT_FALSE(comparison.isWhole);
  EXPECT_EQ(comparison.count(Difference::Same), 3U);
}

class PartialRestoreTest : public ComparisonTest {
 protected:
  PartialRestoreTest() {
    setWideCatalog();
    writeFile(prefs("editor.plist"), "{ Snapping = 0; Zoom = 1; Gone = x; }");
    writeFile(prefs("a.layout"), "{ Same = 1; Twice = 0; }");
    writeFile(prefs("b.layout"), "{ Twice = 0; }");
    backup_ = write("B");
    writeFile(prefs("editor.plist"), kPresent);
    writeFile(prefs("a.layout"), "{ Same = 1; Twice = 1; }");
    writeFile(prefs("b.layout"), "{ Twice = 1; }");
    EXPECT_EQ(chmod(prefs("editor.plist").c_str(), 0640), 0);
    files_.heal();
  }
  Result<std::vector<FileChoice>> find(const std::string& item, const std::string& key) {
    return filesWithKeys(compareBackups({.after = backup_, .items = {{item}}}).items.at(0), {*parseKeyPath(key)});
  }
  std::string refusal(const std::string& item, const std::string& key) {
    const auto found = find(item, key);
    return found ? "" : found.error().text;
  }

  static constexpr const char* kPresent = "{ Snapping = 1; Zoom = 2; New = y; }";
  std::shared_ptr<QWBackup> backup_;
};

TEST_F(PartialRestoreTest, PutsBackOnlyTheKeysAndKeepsTheRest) {
  auto chosen = find("keyA", "Snapping");
  ASSERT_TRUE(chosen);
  chosen->front().keys.push_back({"Gone"});
  restorePartly(backup_, {{"keyA", *chosen}}, report_);
  EXPECT_TRUE(report_.isWhole());
  EXPECT_EQ(parsePropertyList(readFile(prefs("editor.plist"))), parsePropertyList("{Snapping=0;Zoom=2;New=y;Gone=x;}"));
  EXPECT_EQ(readFile(inTrash("editor.plist")), kPresent);
  struct stat status {};
  ASSERT_EQ(stat(prefs("editor.plist").c_str(), &status), 0);
  EXPECT_EQ(status.st_mode & 0777U, 0640U);
  EXPECT_EQ(readFile(prefs("a.layout")), "{ Same = 1; Twice = 1; }");
}

TEST_F(PartialRestoreTest, RefusesKeysThatAreNotMeantForOneFile) {
  EXPECT_THAT(refusal("keyB", "Twice"), HasSubstr("is in 2 files"));
  EXPECT_THAT(refusal("keyB", "Same"), HasSubstr("is the same in the backup"));
  EXPECT_THAT(refusal("keyA", "New"), HasSubstr("The backup has no \"New\""));
  EXPECT_THAT(refusal("keyA", "Snaping"), HasSubstr("did you mean \"Snapping\"?"));
  writeFile(prefs("editor.plist"), "{ Snapping = ");
  EXPECT_THAT(refusal("keyA", "Snapping"), HasSubstr("The present file is no readable property list."));
  writeFile(prefs("editor.plist"), "{ Snapping = " + std::string(kLargestReadBytes, '1') + "; }");
  EXPECT_THAT(refusal("keyA", "Snapping"), HasSubstr("the limit is 4.00 MB"));
  std::filesystem::remove(prefs("editor.plist"));
  EXPECT_THAT(refusal("keyA", "Snapping"), HasSubstr("editor.plist is not there: restore it as a whole"));
  EXPECT_THAT(refusal("keyA", "Elsewhere"), testing::Not(HasSubstr("editor.plist"))) << "nobody meant that file";
}

TEST_F(PartialRestoreTest, AtEveryFailureTheFileIsInItsPlaceOrInTheTrash) {
  const auto chosen = find("keyA", "Snapping");
  ASSERT_TRUE(chosen);
  for (const Operation operation : {Operation::StageCopy, Operation::Trash, Operation::Commit}) {
    files_.heal();
    files_.crashBefore(operation);
    EXPECT_THROW(restorePartly(backup_, {{"keyA", *chosen}}, report_), SimulatedCrash);
    const bool isInPlace = fs::exists(prefs("editor.plist"));
    EXPECT_EQ(isInPlace, operation != Operation::Commit);
    EXPECT_EQ(readFile(isInPlace ? prefs("editor.plist") : inTrash("editor.plist")), kPresent);
  }
}

TEST_F(PartialRestoreTest, NoKeyIsTakenFromADamagedCopy) {
  const auto chosen = find("keyA", "Snapping");
  ASSERT_TRUE(chosen);
  std::ofstream(chosen->front().file.after, std::ios::in | std::ios::out).seekp(13) << '9';
  restorePartly(backup_, {{"keyA", *chosen}}, report_);
  EXPECT_TRUE(report_.hasFailures());
  EXPECT_EQ(readFile(prefs("editor.plist")), kPresent);
  const auto damaged = compareBackups({.after = backup_, .items = {{"keyA"}}});
  EXPECT_THAT(damaged.items.at(0).files.at(0).remark, HasSubstr("The copy is damaged"));
}

TEST_F(PartialRestoreTest, TheKeyThatHindersIsNamed) {
  auto chosen = find("keyA", "Snapping");
  ASSERT_TRUE(chosen);
  chosen->front().keys.push_back({"Gone"});
  writeFile(prefs("editor.plist"), "( a )");
  restorePartly(backup_, {{"keyA", *chosen}}, report_);
  EXPECT_THAT(report_.causes(), HasSubstr("no place for \"Snapping\""));
}

// An editor that writes its preferences between the reading and the replacing.
TEST_F(PartialRestoreTest, WhatAnotherProgramWritesMeanwhileStays) {
  const auto chosen = find("keyA", "Snapping");
  ASSERT_TRUE(chosen);
  const auto known = fakes_.platform.files.info(prefs("editor.plist"), Links::Follow);
  writeFile(prefs("editor.plist"), "{ Snapping = 7; }");
  replaceContent(prefs("editor.plist"), "x", *known, "keyA", report_);
  EXPECT_TRUE(report_.hasFailures());
  EXPECT_EQ(readFile(prefs("editor.plist")), "{ Snapping = 7; }");
}

}  // namespace
}  // namespace vantory::test
