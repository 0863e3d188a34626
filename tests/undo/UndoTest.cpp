#include <ctime>
#include <filesystem>

#include "catalog/FileRestoring.h"
#include "platform/StagingName.h"
#include "services/receipts/ReceiptFolder.h"
#include "services/receipts/TaskReceipt.h"
#include "tests/backups/BackupsTest.h"
#include "undo/Deeds.h"
#include "undo/UndoRun.h"

namespace vantory::test {
namespace {

namespace fs = std::filesystem;

using testing::Contains;
using testing::UnorderedElementsAre;

// A catalog of one item with three files, and tasks with receipts.
class UndoTest : public BackupsTest {
 protected:
  UndoTest() {
    fakes_.clock.set({std::time(nullptr), 0});  // as the Trash has it
    fill("old");
    setCatalog({{"Preferences", {prefs("*.plist")}}});
  }

  void fill(const std::string& content) {
    for (const char* name : {"a", "b", "c"}) writeFile(prefs(name) + ".plist", content);
  }
  std::string contents() const {
    std::string all;
    for (const char* name : {"a", "b", "c"})
      all += exists(prefs(name) + ".plist") ? readFile(prefs(name) + ".plist") + " " : "- ";
    return all;
  }
  const std::shared_ptr<QWPrefItem> item() { return controller().appArray().front()->children().front(); }
  static std::string newest() { return receiptPath(*receiptFolder(), receiptNames()->front()); }

  // As a killed task leaves it.
  static void cutNewestAt(const char* words) {
    const std::string whole = readFile(newest());
    EXPECT_NE(whole.find(words), std::string::npos);
    writeFile(newest(), whole.substr(0, whole.find(words)));
  }

  template <class Work>
  TaskReport task(const std::string& name, Work work) {
    TaskReport report;
    TaskReceipt receipt(report, {.name = name});
    work(report);
    receipt.end();
    return report;
  }
  TaskReport trash() {
    return task("trash", [&](TaskReport& report) { item()->trash(report); });
  }
  TaskReport undo() {
    const auto receipts = *allReceipts();
    const Receipt* receipt = newestToUndo(receipts);
    EXPECT_TRUE(receipt);
    return receipt ? undo(*receipt) : TaskReport();
  }
  static TaskReport undo(const Receipt& receipt) {
    TaskReport report;
    TaskReceipt own(report, {.name = "undo"});
    own.takesBack(receipt.name);
    UndoRun(receipt, *allReceipts(), report).run();
    return report;
  }
};

TEST_F(UndoTest, OfAKilledTaskTheTrashTellsWhatItDid) {
  trash();
  const std::string whole = readFile(newest());
  const std::size_t planned = whole.find("{ done");
  for (std::size_t length = 0; length < whole.size(); length += 29) {
    writeFile(newest(), whole.substr(0, length));
    const auto receipt = readReceipt(receiptNames()->front());
    if (length < planned) {
      EXPECT_TRUE(!receipt || deedsOf(*receipt, {*receipt}).empty()) << length;
    } else {
      ASSERT_TRUE(receipt.ok()) << length;
      EXPECT_EQ(deedsOf(*receipt, {*receipt}).size(), 3u) << length;
    }
  }
  EXPECT_TRUE(undo().isWhole());
  EXPECT_EQ(contents(), "old old old ");
}

TEST_F(UndoTest, OfAKilledRestoreOnlyWhatItReachedIsTakenBack) {
  const auto backup = backupOfAll("Set");
  ASSERT_EQ(backup->writeData(report_), WriteResult::Success);
  // Two files are as the backup has them. The disk dies after the second was put in place.
  writeFile(prefs("c.plist"), "changed");
  files_.heal();
  files_.crashAfter(Operation::Commit, 2);
  TaskReport report;
  auto receipt = std::make_unique<TaskReceipt>(report, TaskReceipt::Task{.name = "restore"});
  EXPECT_THROW(backup->restore(report), SimulatedCrash);
  files_.heal();
  const std::string left = readFile(newest());
  receipt.reset();
  writeFile(newest(), left);
  EXPECT_TRUE(undo().isWhole());
  EXPECT_EQ(contents(), "old old changed ");
}

// What the person emptied from the Trash before.
TEST_F(UndoTest, HowMuchOfATaskCameBackIsKnown) {
  const auto extent = [] { return allReceipts()->back().undone; };
  trash();
  const std::string trashed = inTrash("");
  for (const char* name : {"a.plist", "b.plist", "c.plist"}) fs::rename(trashed + name, home_ / name);
  EXPECT_FALSE(undo().isWhole());
  EXPECT_EQ(extent(), Undone::Nothing);
  EXPECT_TRUE(allReceipts()->back().undone.has_value()) << "the next undo goes on to the task before";
  for (const char* name : {"a.plist", "b.plist"}) {
    fs::rename(home_ / name, trashed + name);
    EXPECT_FALSE(undo(allReceipts()->back()).isWhole());
    EXPECT_EQ(extent(), Undone::InPart);
  }
  fs::rename(home_ / "c.plist", trashed + "c.plist");
  EXPECT_TRUE(undo(allReceipts()->back()).isWhole());
  EXPECT_EQ(extent(), Undone::Whole);
}

// The Trash was emptied, and the name in it is another's now.
TEST_F(UndoTest, OfAKilledTrashAnEarlierOneClaimsNothing) {
  fakes_.clock.advance(-std::chrono::hours(1));
  trash();
  cutNewestAt("{ ended");
  std::filesystem::remove_all(home_ / ".local/share/Trash");
  fill("new");
  fakes_.clock.advance(std::chrono::hours(1));
  trash();
  cutNewestAt("{ done");
  EXPECT_TRUE(undo().isWhole());
  EXPECT_EQ(contents(), "new new new ");
}

TEST_F(UndoTest, OfAKilledRestoreOfKeysTheEarlierFileReturns) {
  fakes_.clock.advance(std::chrono::seconds(1));  // staged before the receipt is begun
  const std::string path = prefs("a.plist");
  task("restore-keys",
       [&](TaskReport& report) { replaceContent(path, "keys", *files_.info(path, Links::Follow), "prefs", report); });
  cutNewestAt("{ done");
  EXPECT_EQ(contents(), "keys old old ");
  EXPECT_TRUE(undo().isWhole());
  EXPECT_EQ(contents(), "old old old ");
}

// The copy fails, and so does the way back out of the Trash.
TEST_F(UndoTest, OfAFailedRestoreWhatStayedInTheTrashReturns) {
  const auto backup = backupOfAll("Set");
  ASSERT_EQ(backup->writeData(report_), WriteResult::Success);
  fill("live");
  files_.heal();
  files_.fail(Operation::Commit, std::errc::no_space_on_device);
  files_.fail(Operation::Move, std::errc::io_error, FaultyFileSystem::kEveryCall);
  const TaskReport report = task("restore", [&](TaskReport& report) { backup->restore(report); });
  files_.heal();
  EXPECT_EQ(contents(), "- old old ");
  EXPECT_THAT(report.remarks(), ElementsAre(formatted("The previous \"%@\" lies in the Trash: %@", prefs("a.plist"),
                                                      inTrash("a.plist"))));
  EXPECT_TRUE(undo().isWhole());
  EXPECT_EQ(contents(), "live live live ");
}

TEST_F(UndoTest, LocksOfFilesAndTheirFoldersOutlastARestore) {
  const auto backup = backupOfAll("Set");
  ASSERT_EQ(backup->writeData(report_), WriteResult::Success);
  fill("live");
  const std::set<std::string> locks = {home_ / "Library/Preferences", prefs("a.plist")};
  for (const bool isKilled : {false, true}) {
    metadata_.locked = locks;
    files_.heal();
    if (isKilled) files_.crashBefore(Operation::Commit);
    try {
      task("restore", [&](TaskReport& report) { backup->restore(report); });
    } catch (const SimulatedCrash&) {
      cutNewestAt("{ ended");
    }
    files_.heal();
    EXPECT_EQ(metadata_.locked == locks, !isKilled);
    EXPECT_TRUE(undo().isWhole());
    EXPECT_EQ(metadata_.locked, locks);
    EXPECT_EQ(contents(), "live live live ");
  }
}

TEST_F(UndoTest, ATaskThatOnlySetALockAgainIsPassedOver) {
  const auto backup = backupOfAll("Set");
  ASSERT_EQ(backup->writeData(report_), WriteResult::Success);
  fill("live");
  metadata_.locked = {home_ / "Library/Preferences"};
  const auto restore = [&] { task("restore", [&](TaskReport& report) { backup->restore(report); }); };
  restore();
  files_.fail(Operation::StageCopy, std::errc::io_error, FaultyFileSystem::kEveryCall);
  restore();
  files_.heal();
  EXPECT_TRUE(undo().isWhole());
  EXPECT_EQ(contents(), "live live live ");
}

// Killed when its replaced copies were in the Trash; then when they lay beside the backup, and the undo as well.
TEST_F(UndoTest, OfAKilledUpdateTheReplacedCopiesAreFound) {
  const auto backup = backupOfAll("Set");
  ASSERT_EQ(backup->writeData(report_), WriteResult::Success);
  const std::string copies = inLibrary("Set.vnt/Users/user/Library/Preferences/");
  const auto update = [&](const char* content) {
    fill(content);
    task("update", [&](TaskReport& report) { EXPECT_EQ(backup->writeData(report, true), WriteResult::Success); });
    cutNewestAt("{ done = \"trash\"");
  };
  update("newer");
  EXPECT_TRUE(undo().isWhole());
  EXPECT_EQ(readFile(copies + "b.plist"), "old");

  // Killed before it replaced anything.
  files_.heal();
  files_.crashBefore(Operation::Commit);
  EXPECT_THROW(task("update", [&](TaskReport& report) { backup->writeData(report, true); }), SimulatedCrash);
  files_.heal();
  cutNewestAt("{ ended");
  EXPECT_TRUE(undo().isWhole());
  EXPECT_TRUE(*fakes_.checksums.held(inLibrary("Set.vnt/Settings.plist"))) << "the note of what it holds";

  std::filesystem::remove_all(home_ / ".local/share/Trash");
  update("newest");
  std::filesystem::rename(inTrash("Set (replaced copies)"), inLibrary("Set (replaced copies)"));
  files_.heal();
  files_.crashAfter(Operation::Commit, 2);
  EXPECT_THROW(undo(), SimulatedCrash);
  files_.heal();
  cutNewestAt("{ ended");
  fakes_.clock.advance(std::chrono::seconds(1));
  EXPECT_TRUE(undo().isWhole());
  EXPECT_EQ(readFile(copies + "a.plist") + readFile(copies + "b.plist") + readFile(copies + "c.plist"), "oldoldold");

  // The undo, as it were, was killed before the copies that it replaced went to the Trash, and while it made one.
  writeFile(inLibrary("Set (replaced copies)/a"), "kept");
  for (const std::string& name : {stagingName("a.plist"), stagingName("other")}) writeFile(copies + name, "half");
  cutNewestAt("{ ended");
  EXPECT_TRUE(undo().isWhole());
  EXPECT_FALSE(exists(inLibrary("Set (replaced copies)")));
  EXPECT_FALSE(exists(copies + stagingName("a.plist")));
  EXPECT_TRUE(exists(copies + stagingName("other"))) << "it may be somebody's own";
}

// Both within a second: what the first moved to the Trash is not what the second was about to.
TEST_F(UndoTest, OfAKilledUndoOfAKilledRestoreTheRestIsTakenBack) {
  const auto backup = backupOfAll("Set");
  ASSERT_EQ(backup->writeData(report_), WriteResult::Success);
  fill("live");
  task("restore", [&](TaskReport& report) { backup->restore(report); });
  cutNewestAt("{ ended");
  // The disk was attached anew since.
  std::string receipt = readFile(newest());
  const std::string words = "identity = \"";
  for (std::size_t at = receipt.find(words); at != std::string::npos; at = receipt.find(words, at + words.size()))
    receipt.insert(at + words.size(), "7");
  writeFile(newest(), receipt);
  files_.heal();
  files_.crashAfter(Operation::Trash, 0);
  EXPECT_THROW(undo(), SimulatedCrash);
  files_.heal();
  cutNewestAt("{ ended");
  for (const char* name : {"a.plist", "b.plist"}) writeFile(prefs(stagingName(name)) + "/half", "half");
  const auto held = files_.holdFolder(prefs(stagingName("b.plist")), std::chrono::milliseconds(0));
  EXPECT_TRUE(undo().isWhole());
  EXPECT_EQ(contents(), "live live live ");
  EXPECT_FALSE(exists(prefs(stagingName("a.plist"))));
  EXPECT_TRUE(exists(prefs(stagingName("b.plist")))) << "somebody is at work there";
}

// What the killed undo did already belongs to the one that ended it, noted or not.
TEST_F(UndoTest, DoneAgainIsAllThatSeveralAttemptsTookBack) {
  const auto backup = backupOfAll("Set");
  ASSERT_EQ(backup->writeData(report_), WriteResult::Success);
  for (const char* lost : {"{ ended", "{ done"}) {
    fill("live");
    task("restore", [&](TaskReport& report) { backup->restore(report); });
    files_.heal();
    files_.crashAfter(Operation::Move, 1);
    EXPECT_THROW(undo(), SimulatedCrash);
    files_.heal();
    cutNewestAt(lost);
    EXPECT_TRUE(undo().isWhole()) << lost;
    EXPECT_EQ(contents(), "live live live ");
    EXPECT_TRUE(undo(allReceipts()->front()).isWhole()) << lost;
    EXPECT_EQ(contents(), "old old old ");
    EXPECT_TRUE(undo().isWhole()) << lost;
    EXPECT_EQ(contents(), "live live live ");
    std::filesystem::remove_all(*receiptFolder());
    std::filesystem::remove_all(home_ / ".local/share/Trash");
  }
}

// All within a second, so that each item has its name in the Trash for the second time.
TEST_F(UndoTest, WhatWasDoneAgainInSeveralAttemptsIsTakenBackAtOnce) {
  for (const char* lost : {"", "{ ended", "{ done"}) {
    trash();
    undo();
    const Receipt undone = allReceipts()->front();
    files_.heal();
    if (*lost) {
      files_.crashAfter(Operation::Trash, 2);
      EXPECT_THROW(undo(undone), SimulatedCrash);
      cutNewestAt(lost);
    } else {
      files_.fail(Operation::Trash, std::errc::io_error, 2);
      EXPECT_FALSE(undo(undone).isWhole());
    }
    files_.heal();
    EXPECT_TRUE(undo(undone).isWhole()) << lost;
    EXPECT_EQ(contents(), "- - - ") << lost;
    EXPECT_TRUE(undo().isWhole()) << lost;
    EXPECT_EQ(contents(), "old old old ") << lost;
    EXPECT_FALSE(newestToUndo(*allReceipts())) << lost;
    std::filesystem::remove_all(*receiptFolder());
  }
}

// What was done when it was ahead comes before what was done since.
TEST_F(UndoTest, AClockThatWasAheadHidesNoTask) {
  const auto lock = [&](State state) {
    task(state == On ? "lock" : "unlock", [&](TaskReport& report) { item()->lockFiles(state, report); });
  };
  fakes_.clock.advance(std::chrono::hours(24'000));
  lock(On);
  fakes_.clock.advance(-std::chrono::hours(24'000));
  lock(Off);
  for (const std::size_t locked : {3U, 0U}) {
    EXPECT_TRUE(undo().isWhole());
    EXPECT_EQ(metadata_.locked.size(), locked);
  }
  EXPECT_EQ(newestToUndo(*allReceipts()), nullptr);
}

TEST_F(UndoTest, WhatASpoiltReceiptSaysIsRefused) {
  trash();
  const std::string whole = readFile(newest());
  const std::string path = prefs("a.plist");
  for (const std::string& hostile : std::vector<std::string>{"Library/x", home_ / "../x", "/etc/x", home_.path(), ""}) {
    std::string text = whole;
    for (std::size_t at = 0; (at = text.find("\"" + path + "\"", at)) != std::string::npos; at += 1)
      text.replace(at, path.size() + 2, "\"" + hostile + "\"");
    writeFile(newest(), text);
    const auto receipts = *allReceipts();
    if (!receipts.empty()) {
      TaskReport report;
      UndoRun(receipts.front(), receipts, report).run();
      EXPECT_GE(report.count(FileReport::Outcome::Failed), 1u) << hostile;
    }
    EXPECT_TRUE(exists(inTrash("a.plist")));
    EXPECT_FALSE(exists(home_ / "../x"));
  }
  // A note that tells of another item: the Trash was emptied since.
  writeFile(newest(), whole);
  writeFile(home_ / ".local/share/Trash/info/a.plist.trashinfo",
            "[Trash Info]\nPath=" + path + "\nDeletionDate=2031-01-01T00:00:00\n");
  EXPECT_GE(undo().count(FileReport::Outcome::Failed), 1u);
  EXPECT_TRUE(exists(inTrash("a.plist")));
}

TEST_F(UndoTest, AnUpdatedBackupAndALockComeBack) {
  const auto backup = backupOfAll("Set");
  ASSERT_EQ(backup->writeData(report_), WriteResult::Success);
  const std::string copies = inLibrary("Set.vnt/Users/user/Library/Preferences/");
  fill("new");
  writeFile(prefs("d.plist"), "added");
  task("update", [&](TaskReport& report) { EXPECT_EQ(backup->writeData(report, true), WriteResult::Success); });
  EXPECT_TRUE(undo().isWhole());
  EXPECT_EQ(readFile(copies + "b.plist"), "old");
  EXPECT_FALSE(exists(copies + "d.plist"));
  // Done again, it is taken back like any other task.
  const auto receipts = *allReceipts();
  EXPECT_TRUE(undo(receipts.front()).isWhole());
  EXPECT_EQ(readFile(copies + "b.plist"), "new");
  EXPECT_TRUE(undo().isWhole());
  EXPECT_EQ(readFile(copies + "b.plist"), "old");

  // Of several updates each, though the copy that came back is another file.
  for (const char* text : {"second", "third!"}) {
    fill(text);
    task("update", [&](TaskReport& report) { EXPECT_EQ(backup->writeData(report, true), WriteResult::Success); });
  }
  for (const char* text : {"second", "old"}) {
    EXPECT_TRUE(undo().isWhole());
    EXPECT_EQ(readFile(copies + "b.plist"), text);
  }

  metadata_.locked = {prefs("a.plist")};
  task("lock", [&](TaskReport& report) { item()->lockFiles(On, report); });
  EXPECT_EQ(metadata_.locked.size(), 4u);
  // What is so already leaves no receipt, nor does what nothing came of hide the task before.
  const std::string lock = newest();
  task("lock", [&](TaskReport& report) { item()->lockFiles(On, report); });
  EXPECT_EQ(newest(), lock);
  task("trash", [&](TaskReport& report) { report.planned(FileAction::Trash, std::vector{prefs("x")}); });
  EXPECT_TRUE(undo().isWhole());
  EXPECT_THAT(metadata_.locked, UnorderedElementsAre(prefs("a.plist")));
}

TEST_F(UndoTest, ABackupThatWasNotFinishedIsTakenBackAndOneThatWasNotBegunIsNoLoss) {
  files_.fail(Operation::Write, std::errc::no_space_on_device);  // of the settings
  task("autobackup", [](TaskReport& report) { QWBackup::autoBackup()->writeData(report); });
  files_.heal();
  EXPECT_TRUE(undo().isWhole());
  EXPECT_TRUE(fs::is_empty(library() + "/Autosaves"));
  files_.refuseWrites();
  EXPECT_THAT(trash().remarks(), IsEmpty());
}

// The disk is full from the first copy on, or from the backup's own folder on.
TEST_F(UndoTest, ABackupOfWhichNothingCameLeavesTheEarlierOneInItsPlace) {
  task("backup", [&](TaskReport& report) { backupOfAll("Set")->writeData(report); });
  const std::string settings = readFile(inLibrary("Set.vnt/Settings.plist"));
  // The library and the receipts have their folders.
  const std::pair<Operation, int> faults[] = {{Operation::StageCopy, FaultyFileSystem::kEveryCall},
                                              {Operation::MakeFolder, 3}};
  for (const auto& [operation, call] : faults) {
    files_.heal();
    files_.fail(operation, std::errc::no_space_on_device, call);
    const TaskReport report = task(
        "backup", [&](TaskReport& backup) { EXPECT_NE(backupOfAll("Set")->writeData(backup), WriteResult::Success); });
    files_.heal();
    EXPECT_EQ(readFile(inLibrary("Set.vnt/Settings.plist")), settings);
    EXPECT_FALSE(exists(inTrash("Set.vnt")));
    EXPECT_THAT(report.remarks(), ElementsAre("Nothing could be backed up: the earlier backup stays as it is."));
    EXPECT_TRUE(report.hasFailures());
    EXPECT_EQ(report.count(FileReport::Outcome::Done), 0u);
  }
  EXPECT_TRUE(undo().isWhole()) << "the first of these tasks, as the others did nothing";
  EXPECT_TRUE(exists(inTrash("Set.vnt/Settings.plist")));
}

// Its settings do not fit on the disk any more, or nobody knows whether it is on it.
TEST_F(UndoTest, ABackupThatWasNotFinishedLeavesTheEarlierOneInItsPlace) {
  task("backup", [&](TaskReport& report) { backupOfAll("Set")->writeData(report); });
  const std::string settings = readFile(inLibrary("Set.vnt/Settings.plist"));
  for (const Operation operation : {Operation::Write, Operation::Sync}) {
    files_.fail(operation, std::errc::no_space_on_device, FaultyFileSystem::kEveryCall);
    const TaskReport report = task("backup", [&](TaskReport& backup) {
      EXPECT_EQ(backupOfAll("Set")->writeData(backup), WriteResult::SettingsNotWritten);
    });
    files_.heal();
    EXPECT_EQ(readFile(inLibrary("Set.vnt/Settings.plist")), settings);
    EXPECT_FALSE(exists(inTrash("Set.vnt")));
    EXPECT_THAT(report.remarks(), ElementsAre("Nothing could be backed up: the earlier backup stays as it is."));
    EXPECT_TRUE(report.hasFailures());
  }
}

// An item that lies in the folder of another, which comes before or after it; and a folder that becomes a file.
TEST_F(UndoTest, OverlappingItemsAreWholeAndComeBackWhole) {
  const std::string all[] = {prefs("sets"), prefs("sets/a"), prefs("kind")};
  for (const bool folderFirst : {true, false}) {
    SCOPED_TRACE(folderFirst);
    const auto put = [&](const std::string& a, const std::string& b, const std::string& kind) {
      for (const std::string& path : all) fs::remove_all(path);
      writeFile(prefs("sets/a"), a);
      writeFile(prefs("sets/deep/b"), b);
      writeFile(prefs(kind == "folder" ? "kind/in" : "kind"), kind);
    };
    const auto in = [](const std::string& folder) {
      const std::string kind = fs::is_directory(folder + "kind") ? "kind/in" : "kind";
      return readFile(folder + "sets/a") + readFile(folder + "sets/deep/b") + readFile(folder + kind);
    };
    setCatalog({{"A", {all[folderFirst ? 0 : 1]}}, {"B", {all[folderFirst ? 1 : 0]}}, {"C", {all[2]}}});
    put("1", "2", "folder");
    const auto backup = backupOfAll("Set");
    const std::string copies = inLibrary("Set.vnt/Users/user/Library/Preferences/");
    TaskReport report;
    ASSERT_EQ(backup->writeData(report), WriteResult::Success);
    EXPECT_TRUE(report.isWhole());
    EXPECT_EQ(in(copies), "12folder");
    put("3", "4", "file");
    EXPECT_TRUE(task("update", [&](TaskReport& update) { backup->writeData(update, true); }).isWhole());
    EXPECT_EQ(in(copies), "34file");
    EXPECT_TRUE(undo().isWhole());
    EXPECT_EQ(in(copies), "12folder");
    EXPECT_TRUE(undo(allReceipts()->front()).isWhole());
    EXPECT_EQ(in(copies), "34file");
    EXPECT_TRUE(undo().isWhole());
    EXPECT_TRUE(task("restore", [&](TaskReport& restore) { backup->restore(restore); }).isWhole());
    EXPECT_EQ(in(prefs("")), "12folder");
    EXPECT_TRUE(undo().isWhole());
    EXPECT_EQ(in(prefs("")), "34file");
    task("restore", [&](TaskReport& restore) { backup->restore(restore); });
    writeFile(prefs("sets/deep/b"), "x");  // of the same size
    EXPECT_TRUE(undo().hasFailed(FileAction::Trash, prefs("sets"))) << "what a person changed stays";
    EXPECT_EQ(readFile(prefs("sets/deep/b")), "x");
    fs::remove_all(*receiptFolder());
  }
}

TEST_F(UndoTest, KeepsTheNewestAndThoseOfTasksThatRun) {
  TaskReport report;
  TaskReceipt running(report, {.name = "trash"});
  item()->trash(report);
  for (std::size_t i = 0; i < kMostReceipts + 3; ++i) {
    fill("old");
    fakes_.clock.advance(std::chrono::seconds(1));
    trash();
  }
  const auto receipts = *allReceipts();
  EXPECT_EQ(receipts.size(), kMostReceipts + 1);
  EXPECT_TRUE(receipts.back().isRunning);
  running.end();

  // A full disk keeps no task from being done.
  fill("old");
  files_.fail(Operation::OpenForAppending, std::errc::no_space_on_device, FaultyFileSystem::kEveryCall);
  EXPECT_EQ(trash().remarks().size(), 1u);
  EXPECT_EQ(contents(), "- - - ");
}

TEST_F(UndoTest, OfMoreThanAReceiptHoldsThatIsTakenBackWhichHasPlace) {
  const TaskReport report = task("trash", [&](TaskReport& trashed) {
    item()->trash(trashed);
    trashed.planned(FileAction::Trash, std::vector<FilePlan>(30'000, {.path = prefs(std::string(200, 'x'))}), "prefs");
  });
  EXPECT_EQ(report.remarks().size(), 1u);
  EXPECT_TRUE(undo().isWhole());
  EXPECT_EQ(contents(), "old old old ");
}

}  // namespace
}  // namespace vantory::test
