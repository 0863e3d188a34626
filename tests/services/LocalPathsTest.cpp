#include "services/QWLocalPaths.h"

#include "tests/services/ServicesTest.h"

namespace vantory::test {
namespace {

using LocalPathsTest = ServicesTest;

TEST_F(LocalPathsTest, ProtectTheFoldersOfTheSystem) {
  const auto isProtected = [](const std::string& path) { return QWLocalPaths::isPathSystemDirectory(path); };
  const std::string shared = machine_ / "Users/Shared";
  for (const std::string& path : {std::string("/"), std::string("/usr/local/bin"), std::string("/Systemfoo"), shared,
                                  machine_ / "Volumes", home_.path(), home_ / "Library/Preferences"})
    EXPECT_TRUE(isProtected(path)) << path;
  for (const std::string& path : {std::string("/ab"), std::string(), shared + "/x", shared + "/", home_ / "Movies"})
    EXPECT_FALSE(isProtected(path)) << path;
  // A trailing slash takes the character before it along, whatever its length.
  EXPECT_TRUE(isProtected(shared + "x/"));
  EXPECT_TRUE(isProtected(shared + "\u00e9/"));
  EXPECT_FALSE(QWLocalPaths::isPathSystemDirectory("/usr/local", true));
}

}  // namespace
}  // namespace vantory::test
