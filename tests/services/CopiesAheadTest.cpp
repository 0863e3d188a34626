#include "services/files/CopiesAhead.h"

#include <atomic>
#include <filesystem>
#include <thread>

#include "tests/services/ServicesTest.h"

namespace vantory::test {
namespace {

class CopiesAheadTest : public ServicesTest {
 protected:
  // Every `missing`-th source does not exist.
  std::vector<CopyRequest> requests(int missing) {
    std::vector<CopyRequest> requests;
    for (int i = 0; i < 40; ++i) {
      const std::string name = std::to_string(i);
      if (i == 25) {
        std::filesystem::create_symlink("24", (home_ / "from/") + name);
      } else if (i % missing != 0) {
        writeFile(home_ / "from/" + name, name);
      }
      requests.push_back({.source = home_ / "from/" + name, .destination = home_ / "to/" + name});
    }
    makeFolders(home_ / "to");
    return requests;
  }
};

TEST_F(CopiesAheadTest, WhatItMissesIsItsOwnersAndWhatNobodyTakesIsGone) {
  const std::vector<CopyRequest> wanted = requests(7);
  {
    CopiesAhead ahead(wanted, 0);
    while (files_.calls(Operation::Info) < 40) std::this_thread::yield();
    for (std::size_t i = 0; i < 30; ++i) {
      const auto copy = ahead.take(i);
      ASSERT_EQ(copy != nullptr, i % 7 != 0 && i != 25) << i;
      if (!copy) continue;
      EXPECT_TRUE(copy->commit(StagedCopy::Existing::Keep).ok());
      EXPECT_EQ(readFile(wanted[i].destination), std::to_string(i));
    }
  }
  for (const auto& entry : std::filesystem::directory_iterator(home_ / "to"))
    EXPECT_LT(std::stoi(entry.path().filename()), 30);
}

// As where a process may have few files open.
class FewOpenFiles : public LockableFiles {
 public:
  using LockableFiles::LockableFiles;
  Result<std::unique_ptr<StagedCopy>> stageCopy(const CopyRequest& request) override {
    auto copy = std::make_unique<OpenCopy>(open_);
    if (open_ > kMost) return Error{std::errc::too_many_files_open, request.source};
    auto staged = LockableFiles::stageCopy(request);
    if (!staged) return staged.error();
    ++staged_;
    copy->staged = std::move(*staged);
    return std::unique_ptr<StagedCopy>(std::move(copy));
  }
  int staged() const { return staged_; }

  static constexpr int kMost = 6;

 private:
  struct OpenCopy : StagedCopy {
    explicit OpenCopy(std::atomic<int>& open) : open(open) { ++open; }
    ~OpenCopy() override { --open; }
    Status commit(Existing existing) override { return staged->commit(existing); }
    const std::vector<std::string>& notes() const override { return staged->notes(); }
    std::atomic<int>& open;
    std::unique_ptr<StagedCopy> staged;
  };

  std::atomic<int> open_ = 0;
  std::atomic<int> staged_ = 0;
};

TEST_F(CopiesAheadTest, LeavesItsOwnerTheFilesThatMayBeOpen) {
  const std::vector<CopyRequest> wanted = requests(1000);
  FewOpenFiles disk(metadata_);
  FakePlatform fakes(disk, metadata_, machine_.path(), home_.path());
  const Runtime runtime(fakes.platform);
  int failures = 0;
  {
    CopiesAhead ahead(wanted, 0);
    while (disk.staged() < FewOpenFiles::kMost) std::this_thread::yield();
    for (std::size_t i = 1; i < wanted.size(); ++i) {
      auto copy = ahead.take(i);
      auto own = copy ? Result(std::move(copy)) : disk.stageCopy(wanted[i]);
      if (!own || !(*own)->commit(StagedCopy::Existing::Keep)) ++failures;
    }
  }
  EXPECT_EQ(failures, 0);
}

}  // namespace
}  // namespace vantory::test
