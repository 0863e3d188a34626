// What restoring a backup would change.
#include "backups/comparison/Comparison.h"

#include <sys/stat.h>

#include "backups/BackupFolder.h"
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

}  // namespace
}  // namespace vantory::test
