#include "services/files/FileOperation.h"

#include <filesystem>
#include <thread>

#include "services/files/QWFileManager.h"
#include "services/threads/MainThread.h"
#include "tests/services/ServicesTest.h"

namespace vantory::test {
namespace {

using namespace std::chrono_literals;
using testing::IsEmpty;
using Stage = FileOperationInfo::Stage;

// Copies at the pace that a test sets.
class PacedFiles : public LinuxFileSystem {
 public:
  Result<std::unique_ptr<StagedCopy>> stageCopy(const CopyRequest& request) override {
    CopyRequest paced = request;
    paced.observer = [this, observer = request.observer](std::int64_t bytes, int objects) {
      step();
      return observer(bytes, objects);
    };
    return LinuxFileSystem::stageCopy(paced);
  }

  std::function<void()> step = [] {};
};

// What it is told, checked to be on the main thread and at the same time as nothing else.
class Listener : public FileOperationDelegate {
 public:
  using FileOperationDelegate::fileOperationFinished;
  using FileOperationDelegate::fileOperationProgress;
  void fileOperationProgress(const FileOperationInfo& info, FileOperation& operation) override {
    hear(info);
    if (cancels) QWFileManager::cancelFileOperation(operation);
    cancelled = cancels;
  }
  void fileOperationFinished(const FileOperationInfo& info) override { hear(info); }

  bool finished() const { return !heard.empty() && heard.back().stage == Stage::Complete; }

  std::vector<FileOperationInfo> heard;
  bool cancels = false;  // at its first report
  std::atomic<bool> cancelled = false;

 private:
  void hear(const FileOperationInfo& info) {
    EXPECT_TRUE(MainThread::shared().isCurrent());
    EXPECT_FALSE(finished());
    heard.push_back(info);
    heard.back().delegate = nullptr;
  }
};

class FileOperationTest : public testing::Test {
 protected:
  FileOperationTest() {
    MainThread::shared();
    QWLog::createNewLog("Test");
  }
  static void waitFor(const Listener& listener) {
    MainThread::shared().runUntil([&] { return listener.finished(); });
  }
  static std::vector<std::string> namesIn(const std::string& folder) {
    return QWFileManager::contentsOfDirectory(folder);
  }

  ScratchFolder home_;
  ScratchFolder machine_;
  PacedFiles files_;
  LinuxFileMetadata metadata_;
  FakePlatform fakes_{files_, metadata_, machine_.path(), home_.path()};
  Runtime runtime_{fakes_.platform};
  const std::string source_ = home_ / "source";
  const std::string destination_ = home_ / "new/deep/copy";
};

TEST_F(FileOperationTest, ReportsOnceASecondAndThenThatItIsDone) {
  for (const char* name : {"a", "b", "c"}) writeFile(source_ + "/" + name, std::string(100, 'x'));
  std::filesystem::create_symlink("a", source_ + "/link");
  files_.step = [&] { fakes_.clock.advance(400ms); };  // twice for each file, once for the link
  const auto listener = std::make_shared<Listener>();
  ASSERT_TRUE(QWFileManager::copyFileWithProgress({source_, destination_, listener, std::string("mine"), 7}));
  waitFor(*listener);
  ASSERT_EQ(listener->heard.size(), 3u);
  EXPECT_EQ(listener->heard[1].stage, Stage::Running);
  EXPECT_EQ(listener->heard[1].bytesTotal, 300u);
  const FileOperationInfo& first = listener->heard.front();
  EXPECT_EQ(std::any_cast<std::string>(first.object), "mine");
  EXPECT_EQ(std::any_cast<int>(first.object2), 7);
  EXPECT_NEAR(first.throughput, static_cast<double>(first.bytesCompleted) / 1.2, 0.001);
  EXPECT_EQ(listener->heard.back().objectsCompleted, 4u);
  EXPECT_EQ(listener->heard.back().bytesCompleted, 300u);
  EXPECT_EQ(readFile(destination_ + "/c"), std::string(100, 'x'));
}

TEST_F(FileOperationTest, CanBeCancelledInsideAFile) {
  writeFile(source_, std::string(64 << 20, 'x'));
  makeFolders(home_ / "new/deep");
  const auto canceller = std::make_shared<Listener>();
  canceller->cancels = true;
  std::atomic<int> steps = 0;
  files_.step = [&] {
    EXPECT_THAT(namesIn(home_ / "new/deep"), IsEmpty());
    fakes_.clock.advance(1s);
    if (++steps == 2)  // the first made it report
      while (!canceller->cancelled) std::this_thread::yield();
  };
  ASSERT_TRUE(QWFileManager::copyFileWithProgress(source_, destination_, canceller, {}));
  waitFor(*canceller);
  EXPECT_EQ(steps, 2);
  EXPECT_THAT(namesIn(home_ / "new/deep"), IsEmpty());
  QWLog::finishWriting();
  EXPECT_EQ(readFile(home_ / "Library/Logs/Quarrywell/Test.1.log").find("Error"), std::string::npos);
}

TEST_F(FileOperationTest, ReplacesNothing) {
  writeFile(source_, "new");
  writeFile(destination_, "old");
  const auto listener = std::make_shared<Listener>();
  ASSERT_TRUE(QWFileManager::copyFileWithProgress(source_, destination_, listener, {}));
  waitFor(*listener);
  EXPECT_EQ(listener->heard.size(), 1u);
  EXPECT_EQ(readFile(destination_), "old");
}

}  // namespace
}  // namespace vantory::test
