#include "services/FileOperation.h"

#include <filesystem>
#include <optional>
#include <thread>

#include "services/MainThread.h"
#include "services/QWFileManager.h"
#include "tests/services/ServicesTest.h"

namespace vantory::test {
namespace {

using namespace std::chrono_literals;
using testing::ElementsAre;
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
  void fileOperationProgress(const FileOperationInfo& info) override { hear(info); }
  void fileOperationFinished(const FileOperationInfo& info) override { hear(info); }

  bool finished() const { return !heard.empty() && heard.back().stage == Stage::Complete; }

  std::vector<FileOperationInfo> heard;

 private:
  void hear(const FileOperationInfo& info) {
    EXPECT_TRUE(MainThread::shared().isCurrent());
    EXPECT_FALSE(finished());
    heard.push_back(info);
    heard.back().delegate = nullptr;
  }
};

// Cancels at its first report.
class Canceller : public Listener {
 public:
  using Listener::fileOperationProgress;
  void fileOperationProgress(const FileOperationInfo&, FileOperation& operation) override {
    QWFileManager::cancelFileOperation(operation);
    cancelled = true;
  }

  std::atomic<bool> cancelled = false;
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
  FakeLocks metadata_;
  FakePlatform fake_{files_, metadata_, machine_.path(), home_.path()};
  std::optional<Runtime> runtime_{std::in_place, fake_.platform};
  const std::string source_ = home_ / "source";
  const std::string destination_ = home_ / "new/deep/copy";
};

TEST_F(FileOperationTest, ReportsOnceASecondAndThenThatItIsDone) {
  for (const char* name : {"a", "b", "c"}) writeFile(source_ + "/" + name, std::string(100, 'x'));
  std::filesystem::create_symlink("a", source_ + "/link");
  files_.step = [&] { fake_.clock.advance(400ms); };  // twice for each file, once for the link
  const auto listener = std::make_shared<Listener>();
  ASSERT_TRUE(QWFileManager::copyFileWithProgress({source_, destination_, listener, std::string("mine"), 7}));
  waitFor(*listener);
  ASSERT_EQ(listener->heard.size(), 3u);
  std::uint64_t bytes = 0;
  for (const FileOperationInfo& info : listener->heard) {
    EXPECT_EQ(info.stage, &info == &listener->heard.back() ? Stage::Complete : Stage::Running);
    EXPECT_EQ(info.source, source_);
    EXPECT_EQ(info.destination, destination_);
    EXPECT_EQ(info.operationType, "copy");
    EXPECT_EQ(std::any_cast<std::string>(info.object), "mine");
    EXPECT_EQ(std::any_cast<int>(info.object2), 7);
    EXPECT_EQ(info.bytesTotal, 300u);
    EXPECT_EQ(info.objectsTotal, 4u);
    EXPECT_GE(info.bytesCompleted, bytes);
    bytes = info.bytesCompleted;
  }
  const FileOperationInfo& first = listener->heard.front();
  EXPECT_NEAR(first.throughput, static_cast<double>(first.bytesCompleted) / 1.2, 0.001);
  EXPECT_EQ(listener->heard.back().objectsCompleted, 4u);
  EXPECT_EQ(bytes, 300u);
  EXPECT_EQ(readFile(destination_ + "/c"), std::string(100, 'x'));
}

TEST_F(FileOperationTest, CanBeCancelledInsideAFile) {
  writeFile(source_, std::string(64 << 20, 'x'));
  makeFolders(home_ / "new/deep");
  const auto canceller = std::make_shared<Canceller>();
  std::atomic<int> steps = 0;
  files_.step = [&] {
    EXPECT_THAT(namesIn(home_ / "new/deep"), IsEmpty());
    fake_.clock.advance(1s);
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

TEST_F(FileOperationTest, ReplacesNothingAndSaysWhatItCannotBegin) {
  writeFile(source_, "new");
  writeFile(destination_, "old");
  const auto listener = std::make_shared<Listener>();
  ASSERT_TRUE(QWFileManager::copyFileWithProgress(source_, destination_, listener, {}));
  waitFor(*listener);
  EXPECT_EQ(listener->heard.size(), 1u);
  EXPECT_EQ(readFile(destination_), "old");

  EXPECT_FALSE(QWFileManager::copyFileWithProgress(home_ / "none", destination_, listener, {}));
  EXPECT_FALSE(QWFileManager::copyFileWithProgress(source_, source_ + "/below/copy", listener, {}));
  EXPECT_THAT(fake_.systemLog.messages(),
              ElementsAre("Error: File " + (home_ / "none") + " doesn't exist. Aborting copy process...",
                          "Unable to copy file " + source_ + " - destination directory " + source_ +
                              "/below doesn't exist. Aborting copy process..."));
}

TEST_F(FileOperationTest, EndsWithTheProgramInTheMiddleOfACopy) {
  writeFile(source_, std::string(64 << 20, 'x'));
  std::atomic<int> steps = 0;
  files_.step = [&] {
    ++steps;
    std::this_thread::sleep_for(1ms);
  };
  const auto listener = std::make_shared<Listener>();
  auto operation = QWFileManager::copyFileWithProgress(source_, destination_, listener, {});
  while (steps == 0) std::this_thread::yield();
  runtime_.reset();
  EXPECT_LT(steps, 60);
  operation.reset();
  EXPECT_EQ(listener.use_count(), 1);
  EXPECT_THAT(listener->heard, IsEmpty());
  EXPECT_TRUE(std::filesystem::is_empty(home_ / "new/deep"));
}

}  // namespace
}  // namespace vantory::test
