#include "services/CopiesAhead.h"

#include <sys/resource.h>

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

TEST_F(CopiesAheadTest, LeavesItsOwnerTheFilesThatMayBeOpen) {
  const std::vector<CopyRequest> wanted = requests(1000);
  const auto openNow = std::distance(std::filesystem::directory_iterator("/proc/self/fd"), {});
  rlimit before{};
  getrlimit(RLIMIT_NOFILE, &before);
  const rlimit tight{static_cast<rlim_t>(openNow) + 8, before.rlim_max};
  setrlimit(RLIMIT_NOFILE, &tight);
  int failures = 0;
  {
    CopiesAhead ahead(wanted, 0);
    while (files_.calls(Operation::StageCopy) < 6) std::this_thread::yield();
    for (std::size_t i = 1; i < wanted.size(); ++i) {
      auto copy = ahead.take(i);
      auto own = copy ? Result(std::move(copy)) : files_.stageCopy(wanted[i]);
      if (!own || !(*own)->commit(StagedCopy::Existing::Keep)) ++failures;
    }
  }
  setrlimit(RLIMIT_NOFILE, &before);
  EXPECT_EQ(failures, 0);
}

}  // namespace
}  // namespace vantory::test
