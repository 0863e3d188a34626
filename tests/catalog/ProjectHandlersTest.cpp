#include "catalog/ProjectHandlers.h"

#include "tests/catalog/CatalogFixture.h"

namespace vantory {
namespace {

using ProjectHandlersTest = test::CatalogTest;

TEST_F(ProjectHandlersTest, TheProgramIsInForceWhenItHasAllKindsOfProjects) {
  auto& viewers = fakes_.defaultHandlers.viewers;
  EXPECT_TRUE(ProjectHandlers::setFCSDefaultFileExtensions());
  EXPECT_EQ(viewers.size(), 8u);
  EXPECT_EQ(viewers["type/stmp"], "com.apple.soundtrackpro");
  EXPECT_FALSE(ProjectHandlers::checkVantoryDefaultForFileExtensions());
  EXPECT_TRUE(ProjectHandlers::setVantoryDefaultFileExtensions());
  EXPECT_TRUE(ProjectHandlers::checkVantoryDefaultForFileExtensions());
  for (auto& [type, viewer] : viewers) {
    const std::string kept = std::exchange(viewer, "com.quarrywell.Vantory");
    EXPECT_FALSE(ProjectHandlers::checkVantoryDefaultForFileExtensions()) << type;
    viewer = kept;
  }
  fakes_.defaultHandlers.unknownExtensions = {"stap"};
  EXPECT_TRUE(ProjectHandlers::setVantoryDefaultFileExtensions()) << "what the platform refuses is passed over";
}

}  // namespace
}  // namespace vantory
