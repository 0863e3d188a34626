#include <filesystem>
#include <functional>

#include "catalog/BackupPlace.h"
#include "services/files/QWAuthorization.h"
#include "services/files/QWFileManager.h"
#include "tests/catalog/CatalogFixture.h"

namespace vantory {
namespace {

using test::exists;
using test::Operation;
using test::readFile;
using test::writeFile;
using testing::ElementsAre;
using testing::Not;

// The backup folder of the user who lives in `home`.
struct FolderBackup : BackupPlace {
  explicit FolderBackup(std::string itsHome) : home(std::move(itsHome)) {}
  std::string path() const override { return home + "/Backups/x.vnt"; }
  std::string safeUserPath(const std::string& path) const override {
    return kHomePlaceholder + path.substr(home.size());
  }

  bool holdsOtherFiles() const override { return isChanged; }

  const std::string home;
  bool isChanged = false;
};

class RestoreTest : public test::CatalogTest {
 protected:
  std::string backedUp(const std::string& relative) const { return backup_.path() + "/Users/user/" + relative; }
  std::size_t failuresOf(const std::function<void()>& work) {
    report_ = {};
    work();
    return report_.count(FileReport::Outcome::Failed);
  }
  // What lies there, or in the Trash under that name; empty when nothing does.
  static std::string contentOf(const std::string& path) {
    if (exists(path + "/inside")) return readFile(path + "/inside");
    return exists(path) ? readFile(path) : std::string();
  }

  FolderBackup backup_{home_.path()};
  const std::string live_ = home_ / "Library/a.plist";
  const std::string folder_ = home_ / "Library";
  const std::shared_ptr<QWPrefItem> item_ = itemWith({live_});
};

// Whatever fails, and wherever the process dies: the old file is in its place or in the Trash, nothing half-made bears
// its name or stays behind, and trying again succeeds.
TEST_F(RestoreTest, NothingIsLostWhateverFails) {
  using Fault = std::function<void()>;
  std::vector<Fault> faults;
  constexpr std::size_t kStagingFaults = 4;
  for (const Operation operation : {Operation::StageCopy, Operation::Trash, Operation::Commit}) {
    for (const std::errc code : {std::errc::no_space_on_device, std::errc::permission_denied})
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
          item_->restoreFilesFromBackup(backup_, report_);
        } catch (const test::SimulatedCrash&) {
          report_.failed(FileAction::Restore, live_, {});
        }
      };
      files_.heal();
      faults[i]();
      EXPECT_EQ(failuresOf(attempt), 1u);
      files_.heal();
      EXPECT_EQ(contentOf(contentOf(live_) == "old" ? live_ : inTrash("a.plist")), "old");
      EXPECT_THAT(contentOf(live_), testing::AnyOf("old", "new", ""));
      EXPECT_TRUE(i >= kStagingFaults || contentOf(live_) == "old") << "touched before the copy was finished";
      const bool isCrash = i % 4 > 1;
      EXPECT_TRUE(isCrash || contentOf(live_) == "old") << "it returns where the copy fails";

      EXPECT_EQ(failuresOf(attempt), 0u);
      EXPECT_EQ(contentOf(live_), "new");
      EXPECT_THAT(QWFileManager::contentsOfDirectory(folder_), ElementsAre("a.plist"));
    }
}

// A folder for a file, or the reverse, comes back as it was backed up, but not where it has become so in the backup.
TEST_F(RestoreTest, AnotherKindOfItemTakesNoLiveOnesPlaceInAChangedBackup) {
  for (const auto& [held, live] : {std::pair{"/inside", ""}, {"", "/inside"}})
    for (const bool isChanged : {true, false}) {
      for (const std::string& path : {folder_, backup_.path()}) std::filesystem::remove_all(path);
      writeFile(backedUp("Library/a.plist") + held, "new");
      writeFile(live_ + live, "old");
      backup_.isChanged = isChanged;
      EXPECT_EQ(failuresOf([this] { item_->restoreFilesFromBackup(backup_, report_); }), isChanged ? 1u : 0u);
      EXPECT_EQ(contentOf(live_), isChanged ? "old" : "new");
    }
}

TEST_F(RestoreTest, WhyAFolderCouldNotBeMadeIsTold) {
  const std::string missing = folder_ + "/Sets";
  const auto item = itemWith({missing + "/a.plist"});
  writeFile(backedUp("Library/Sets/a.plist"), "new");
  files_.fail(Operation::MakeFolder, std::errc::read_only_file_system);
  EXPECT_EQ(failuresOf([&] { item->restoreFilesFromBackup(backup_, report_); }), 1u);
  EXPECT_THAT(report_.causes(), testing::StartsWith(missing + ": Read-only file system"));
  files_.heal();
  std::filesystem::create_symlink("/gone", missing);
  EXPECT_EQ(failuresOf([&] { item->restoreFilesFromBackup(backup_, report_); }), 1u);
  EXPECT_EQ(report_.causes(), missing + " is a symbolic link to /gone, which is not there");
}

TEST_F(RestoreTest, AdministratorRightsCopyOnlyOnceTheLiveFileIsInTheTrash) {
  writeFile(backedUp("Library/a.plist"), "new");
  writeFile(live_, "old");
  metadata_.unwritable = {folder_};
  QWAuthorization::sharedController().setHasGUI(true);
  std::vector<std::string> tools;
  fakes_.privileged.behaviour = [&](const auto& call) { return tools.push_back(call.tool), 1; };
  for (const bool seen : {true, false}) {
    for (const Operation each : {Operation::StageCopy, Operation::Trash, seen ? Operation::Trash : Operation::Info})
      files_.fail(each, std::errc::permission_denied, test::FaultyFileSystem::kEveryCall);
    EXPECT_EQ(failuresOf([this] { item_->restoreFilesFromBackup(backup_, report_); }), 1u);
    EXPECT_THAT(tools, Not(testing::Contains("/bin/cp")));
    EXPECT_EQ(readFile(live_), "old");
    EXPECT_THAT(logged(), testing::IsSupersetOf({"File failed to trash.", "File failed to copy."}));
  }

  files_.heal();
  files_.fail(Operation::StageCopy, std::errc::permission_denied, test::FaultyFileSystem::kEveryCall);
  fakes_.privileged.calls.clear();
  fakes_.privileged.behaviour = [this](const auto& call) {
    EXPECT_EQ(call.tool, "/bin/cp");
    EXPECT_FALSE(exists(live_));
    std::filesystem::copy(call.arguments[3], call.arguments[4]);
    return 0;
  };
  EXPECT_EQ(failuresOf([this] { item_->restoreFilesFromBackup(backup_, report_); }), 0u);
  EXPECT_EQ(fakes_.privileged.calls.size(), 1u);
  EXPECT_EQ(readFile(live_), "new");
  EXPECT_EQ(readFile(inTrash("a.plist")), "old");
}

}  // namespace
}  // namespace vantory
