#include <filesystem>
#include <functional>

#include "services/FailureTally.h"
#include "services/QWAuthorization.h"
#include "services/QWFileManager.h"
#include "tests/catalog/CatalogFixture.h"

namespace vantory {
namespace {

using test::exists;
using test::Operation;
using test::readFile;
using test::writeFile;
using testing::ElementsAre;
using testing::Not;

class RestoreTest : public test::CatalogTest {
 protected:
  std::string backedUp(const std::string& relative) const { return backup_.path() + "/Users/user/" + relative; }
  std::size_t failuresOf(const std::function<void()>& work) const {
    const std::size_t before = FailureTally::shared().count();
    work();
    return FailureTally::shared().count() - before;
  }
  // What lies there, or in the Trash under that name; empty when nothing does.
  static std::string contentOf(const std::string& path) {
    if (exists(path + "/inside")) return readFile(path + "/inside");
    return exists(path) ? readFile(path) : std::string();
  }

  const test::FolderBackup backup_{home_ / "Backups/x.vnt", home_.path()};
  const std::string live_ = home_ / "Library/a.plist";
  const std::string folder_ = home_ / "Library";
  const std::shared_ptr<QWPrefItem> item_ = itemWith({live_});
};

TEST_F(RestoreTest, TellsEachStep) {
  writeFile(backedUp("Library/New/odd \n%@\xff.set"), "odd");
  writeFile(backedUp("Library/a.plist"), "new");
  writeFile(live_, "old");
  (void)logged();
  const auto item = itemWith({live_, home_ / "Library/New/*.set", home_ / "Library/missing"});
  item->addUser(itemWith({home_ / "Library/user"}));
  item->users()[0]->setSelected(Mixed);
  writeFile(backedUp("Library/user"), "");
  item->restoreFilesFromBackup(backup_);
  EXPECT_EQ(readFile(live_), "new");
  EXPECT_EQ(readFile(inTrash("a.plist")), "old");
  EXPECT_EQ(readFile(home_ / "Library/New/odd \n%@\xff.set"), "odd");
  const auto lines = logged();
  ASSERT_EQ(lines.size(), 7u);
  EXPECT_EQ(lines[0], "Trashing file " + live_);
  EXPECT_EQ(lines[1], "File trashed successfully.");
  EXPECT_EQ(lines[2], "Copying file " + backedUp("Library/a.plist") + " to " + live_);
  EXPECT_EQ(lines[3], "File copied successfully.");
  EXPECT_EQ(lines[4], "Creating destination folder " + (home_ / "Library/New"));
}

// Whatever fails, and wherever the process dies: the old file is in its place or in the Trash, nothing half-made bears
// its name or stays behind, and trying again succeeds.
TEST_F(RestoreTest, NothingIsLostWhateverFails) {
  using Fault = std::function<void()>;
  std::vector<Fault> faults;
  for (const Operation operation : {Operation::StageCopy, Operation::Trash, Operation::Commit}) {
    for (const std::errc code : {std::errc::io_error, std::errc::no_space_on_device, std::errc::permission_denied})
      faults.push_back([=, this] { files_.fail(operation, code); });
    faults.push_back([=, this] { files_.crashBefore(operation); });
    faults.push_back([=, this] { files_.crashAfter(operation); });
  }
  faults.push_back([this] { files_.refuseWrites(); });
  for (const std::string suffix : {"", "/inside"})
    for (std::size_t i = 0; i < faults.size(); ++i) {
      SCOPED_TRACE(suffix + " " + std::to_string(i));
      for (const std::string& path : {folder_, backup_.path(), home_ / ".local"}) std::filesystem::remove_all(path);
      writeFile(backedUp("Library/a.plist" + suffix), "new");
      writeFile(live_ + suffix, "old");
      const auto attempt = [this] {
        try {
          item_->restoreFilesFromBackup(backup_);
        } catch (const test::SimulatedCrash&) {
          FailureTally::shared().add();
        }
      };
      files_.heal();
      faults[i]();
      EXPECT_EQ(failuresOf(attempt), 1u);
      files_.heal();
      EXPECT_EQ(contentOf(contentOf(live_) == "old" ? live_ : inTrash("a.plist")), "old");
      EXPECT_THAT(contentOf(live_), testing::AnyOf("old", "new", ""));

      EXPECT_EQ(failuresOf(attempt), 0u);
      EXPECT_EQ(contentOf(live_), "new");
      EXPECT_THAT(QWFileManager::contentsOfDirectory(folder_), ElementsAre("a.plist"));
    }
}

TEST_F(RestoreTest, AFailedCopyLeavesTheLiveFileAndIsTold) {
  writeFile(backedUp("Library/a.plist"), "new");
  writeFile(live_, "old");
  (void)logged();
  // No room; and a backup that may not be read: rights at the destination are not what is missing.
  for (const std::errc code : {std::errc::no_space_on_device, std::errc::permission_denied}) {
    files_.heal();
    files_.fail(Operation::StageCopy, code);
    EXPECT_EQ(failuresOf([this] { item_->restoreFilesFromBackup(backup_); }), 1u);
    EXPECT_EQ(readFile(live_), "old");
    EXPECT_FALSE(exists(inTrash("a.plist")));
    EXPECT_THAT(logged(), ElementsAre("Copying file " + backedUp("Library/a.plist") + " to " + live_,
                                      testing::StartsWith("Error copying file: "), "File failed to copy."));
  }
}

TEST_F(RestoreTest, HostileBackupsAreRefused) {
  writeFile(live_, "old");
  writeFile(home_ / "secret", "secret");
  std::filesystem::create_directories(backedUp("Library"));
  std::filesystem::create_symlink(home_ / "secret", backedUp("Library/a.plist"));
  EXPECT_EQ(failuresOf([this] { item_->restoreFilesFromBackup(backup_); }), 1u);
  EXPECT_EQ(readFile(live_), "old");

  std::filesystem::remove_all(backedUp("Library"));
  std::filesystem::create_directory_symlink(folder_, backedUp("Library"));
  EXPECT_EQ(failuresOf([this] { item_->restoreFilesFromBackup(backup_); }), 1u);
  EXPECT_EQ(readFile(live_), "old");

  std::filesystem::remove(backedUp("Library"));
  writeFile(backedUp("Library/b.plist"), "");
  writeFile(backup_.path() + "/outside", "new");
  const auto climbing = itemWith({home_ / "Library/../../../outside"});
  EXPECT_EQ(failuresOf([&] { climbing->restoreFilesFromBackup(backup_); }), 1u);
  EXPECT_FALSE(exists(inTrash("a.plist")));
}

class RestoreWithRightsTest : public RestoreTest {
 protected:
  RestoreWithRightsTest() {
    writeFile(backedUp("Library/a.plist"), "new");
    writeFile(live_, "old");
    metadata_.unwritable = {folder_};
    QWAuthorization::sharedController().setHasGUI(true);
    files_.fail(Operation::StageCopy, std::errc::permission_denied, test::FaultyFileSystem::kEveryCall);
    (void)logged();
  }
  std::vector<std::string> tools() const {
    std::vector<std::string> names;
    for (const auto& call : fakes_.privileged.calls) names.push_back(call.tool);
    return names;
  }
};

TEST_F(RestoreWithRightsTest, AdministratorRightsCopyOnceTheLiveFileIsInTheTrash) {
  fakes_.privileged.behaviour = [this](const auto& call) {
    EXPECT_FALSE(exists(live_));
    std::filesystem::copy(call.arguments[3], call.arguments[4]);
    return 0;
  };
  EXPECT_EQ(failuresOf([this] { item_->restoreFilesFromBackup(backup_); }), 0u);
  EXPECT_THAT(tools(), ElementsAre("/bin/cp"));
  EXPECT_EQ(readFile(live_), "new");
  EXPECT_EQ(readFile(inTrash("a.plist")), "old");
}

TEST_F(RestoreWithRightsTest, NeverWriteOverALiveFileThatCouldNotBeTrashed) {
  files_.fail(Operation::Trash, std::errc::permission_denied);
  fakes_.privileged.behaviour = [](const auto&) { return 1; };
  EXPECT_EQ(failuresOf([this] { item_->restoreFilesFromBackup(backup_); }), 1u);
  EXPECT_THAT(tools(), Not(testing::Contains("/bin/cp")));
  EXPECT_EQ(readFile(live_), "old");
  EXPECT_THAT(logged(), testing::IsSupersetOf({"File failed to trash.", "File failed to copy."}));
}

}  // namespace
}  // namespace vantory
