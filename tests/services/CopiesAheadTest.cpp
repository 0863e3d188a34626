#include "services/CopiesAhead.h"

#include <filesystem>
#include <thread>

#include "tests/services/ServicesTest.h"

namespace vantory::test {
namespace {

class CopiesAheadTest : public ServicesTest {};

TEST_F(CopiesAheadTest, WhatItMissesIsItsOwnersAndWhatNobodyTakesIsGone) {
  std::vector<CopyRequest> requests;
  for (int i = 0; i < 40; ++i) {
    const std::string name = std::to_string(i);
    if (i == 25) {
      std::filesystem::create_symlink("24", (home_ / "from/") + name);
    } else if (i % 7 != 0) {
      writeFile(home_ / "from/" + name, name);
    }
    requests.push_back({.source = home_ / "from/" + name, .destination = home_ / "to/" + name});
  }
  makeFolders(home_ / "to");
  {
    CopiesAhead ahead(requests, 0);
    while (files_.calls(Operation::Info) < 40) std::this_thread::yield();
    for (std::size_t i = 0; i < 30; ++i) {
      const auto copy = ahead.take(i);
      ASSERT_EQ(copy != nullptr, i % 7 != 0 && i != 25) << i;
      if (!copy) continue;
      EXPECT_TRUE(copy->commit(StagedCopy::Existing::Keep).ok());
      EXPECT_EQ(readFile(requests[i].destination), std::to_string(i));
    }
  }
  for (const auto& entry : std::filesystem::directory_iterator(home_ / "to"))
    EXPECT_LT(std::stoi(entry.path().filename()), 30);
}

}  // namespace
}  // namespace vantory::test
