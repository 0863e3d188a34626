// The platforms that every test of a contract is run on: Linux's, and that of a Mac on emulated calls and tools.
#pragma once

#include <gtest/gtest.h>

#include <ostream>

namespace vantory::test {

enum class System { Linux, Mac };

inline const char* nameOf(System system) {
  return system == System::Mac ? "Mac" : "Linux";
}

inline void PrintTo(System system, std::ostream* stream) {
  *stream << nameOf(system);
}

class SystemTest : public testing::TestWithParam<System> {
 protected:
  const bool isMac = GetParam() == System::Mac;
};

}  // namespace vantory::test

// Runs the tests of a class that is derived from it.
#define VANTORY_ON_EACH_SYSTEM(tests)                                              \
  INSTANTIATE_TEST_SUITE_P(On, tests, testing::Values(System::Linux, System::Mac), \
                           [](const auto& info) { return std::string(nameOf(info.param)); })
