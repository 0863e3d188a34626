#include "catalog/ProjectHandlers.h"

#include "tests/catalog/CatalogFixture.h"

namespace vantory {
namespace {

using testing::ElementsAre;

class ProjectHandlersTest : public test::CatalogTest {
 protected:
  const std::map<std::string, std::string>& viewers() const { return fakes_.defaultHandlers.viewers; }
};

TEST_F(ProjectHandlersTest, EachKindOfProjectHasItsApplication) {
  EXPECT_TRUE(ProjectHandlers::setFCSDefaultFileExtensions());
  const std::map<std::string, std::string> expected = {{"type/fcp", "com.apple.finalcutpro"},
                                                       {"type/stap", "com.apple.soundtrackpro"},
                                                       {"type/stmp", "com.apple.soundtrackpro"},
                                                       {"type/motn", "com.apple.motion"},
                                                       {"type/ipr", "com.apple.livetype"},
                                                       {"type/dspproj", "com.apple.dvdstudiopro"},
                                                       {"type/compressor", "com.apple.compressor.compressor"},
                                                       {"type/colorproj", "com.apple.color"}};
  EXPECT_EQ(viewers(), expected);
  EXPECT_THAT(logged(),
              ElementsAre("Setting Final Cut Studio as default project handler...", "Project handling setup complete"));
  EXPECT_FALSE(ProjectHandlers::checkVantoryDefaultForFileExtensions());
}

TEST_F(ProjectHandlersTest, TheProgramIsInForceWhenItHasAllOfThem) {
  EXPECT_FALSE(ProjectHandlers::checkVantoryDefaultForFileExtensions());
  EXPECT_TRUE(ProjectHandlers::setVantoryDefaultFileExtensions());
  EXPECT_TRUE(ProjectHandlers::checkVantoryDefaultForFileExtensions());
  EXPECT_THAT(logged(),
              ElementsAre("Setting Vantory as default project handler...", "Project handling setup complete"));
  EXPECT_EQ(viewers().size(), 8u);
  for (const auto& [type, viewer] : viewers()) {
    EXPECT_EQ(viewer, "com.quarrywell.vantory");
    const std::string kept = std::exchange(fakes_.defaultHandlers.viewers[type], "com.quarrywell.Vantory");
    EXPECT_FALSE(ProjectHandlers::checkVantoryDefaultForFileExtensions()) << type;
    fakes_.defaultHandlers.viewers[type] = kept;
  }
  EXPECT_THAT(logged(), ElementsAre());
}

TEST_F(ProjectHandlersTest, WhatThePlatformRefusesIsPassedOver) {
  fakes_.defaultHandlers.unknownExtensions = {"stap"};
  EXPECT_TRUE(ProjectHandlers::setVantoryDefaultFileExtensions());
  EXPECT_EQ(viewers().size(), 7u);
  EXPECT_FALSE(ProjectHandlers::checkVantoryDefaultForFileExtensions());
}

}  // namespace
}  // namespace vantory
