#include <filesystem>

#include "services/QWFileManager.h"
#include "tests/services/ServicesTest.h"

namespace vantory::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::UnorderedElementsAre;

class WildcardPathsTest : public ServicesTest {
 protected:
  std::vector<std::string> find(const std::string& pattern) {
    auto found = QWFileManager::filesMatchingWildcardPath(pattern, folder_);
    for (std::string& path : found) path.erase(0, folder_.size() + 1);
    return found;
  }
  void make(std::initializer_list<const char*> names) {
    for (const char* name : names) writeFile(folder_ + "/" + name, "");
  }

  const std::string folder_ = home_ / "files";
};

TEST_F(WildcardPathsTest, MatchesWholeNamesByCase) {
  make({"x1", "X2", ".x3", "yx", "com.a.1.plist", "com.a.plist", "h\u00e9lo", "hlo",
        "h\xff"
        "lo",
        "a?b", "a*b"});
  EXPECT_THAT(find("x*"), ElementsAre("x1"));
  EXPECT_THAT(find("*x*"), UnorderedElementsAre("x1", ".x3", "yx"));
  EXPECT_THAT(find("com.a.*.plist"), ElementsAre("com.a.1.plist"));
  EXPECT_THAT(find("*h?lo"), UnorderedElementsAre("h\u00e9lo",
                                                  "h\xff"
                                                  "lo"));
  EXPECT_THAT(find("a*b"), UnorderedElementsAre("a?b", "a*b"));
  EXPECT_EQ(find("*").size(), 11u);
}

TEST_F(WildcardPathsTest, TakesTimeForNoPattern) {
  make({std::string(250, 'a').c_str()});
  std::string pattern;
  for (int i = 0; i < 60; ++i) pattern += "*a";
  EXPECT_THAT(find(pattern + "*b"), IsEmpty());
}

TEST_F(WildcardPathsTest, GoesThroughFolders) {
  make({"5.0/Settings/u/a.sqpreset", "5.0/Settings/u/b.txt", "5.5/Settings/v/c.sqpreset", "5.5/Settings/d.sqpreset",
        "file"});
  EXPECT_THAT(find("*/Settings/*/*.sqpreset"),
              UnorderedElementsAre("5.0/Settings/u/a.sqpreset", "5.5/Settings/v/c.sqpreset"));
  EXPECT_THAT(find("*/Settings"), UnorderedElementsAre("5.0/Settings", "5.5/Settings"));
  EXPECT_THAT(find("/*/None/*"), IsEmpty());
  EXPECT_THAT(find("no/such?/file"), ElementsAre("no/such?/file"));
  // A trailing slash throws the matches away.
  EXPECT_THAT(QWFileManager::filesMatchingWildcardPath("5*/", folder_), ElementsAre(folder_));
  EXPECT_THAT(QWFileManager::filesMatchingWildcardPath(folder_ + "/f*"), ElementsAre(folder_ + "/file"));
}

}  // namespace
}  // namespace vantory::test
