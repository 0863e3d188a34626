#include "platform/linux/session/ApplicationProcesses.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>

#include "tests/support/ScratchFolder.h"

namespace vantory::test {
namespace {

using ::testing::UnorderedElementsAre;

constexpr const char* kUser = "0::/user.slice/user-1000.slice/user@1000.service/app.slice/";

TEST(ApplicationUnitsTest, NamesTellTheApplicationExactly) {
  for (const char* unit : {"app-org.example.Ed-4711.scope", "app-gnome-org.example.Ed-4711.scope",
                           "app-KDE-org.example.Ed@0d5f1b6e.service", "app-org.example.\\x45d-1.scope"})
    EXPECT_TRUE(isUnitOfApplication(unit, "org.example.Ed")) << unit;
  for (const char* unit : {"app-org.example.Editor-1.scope", "app-my.org.example.Ed-1.scope", "org.example.Ed-1.scope",
                           "app-org.example.Ed\\x2dBeta-1.scope", "app-.scope", "app-org.example.Ed\\x", ""})
    EXPECT_FALSE(isUnitOfApplication(unit, "org.example.Ed")) << unit;
  const std::string uuid = "0a1b2c3d-0a1b-0a1b-0a1b-0a1b2c3d4e5f";
  EXPECT_TRUE(isUnitOfSnap("snap.studio.edit-" + uuid + ".scope", "studio.edit"));
  EXPECT_TRUE(isUnitOfSnap("snap.studio.edit.service", "studio.edit"));
  EXPECT_FALSE(isUnitOfSnap("snap.studio.edit-more-" + uuid + ".scope", "studio.edit"));
  EXPECT_EQ(unitOfProcess("9:name=systemd:/app-a-1.scope\n5:devices:/app-b-1.scope\n0::/\n"), "app-a-1.scope");
  EXPECT_EQ(unitOfProcess("\n:\n::\nx"), "");
}

// A folder like /proc, with numbers that no process here has.
class ProcessTreeTest : public ::testing::Test {
 protected:
  static constexpr pid_t kFirst = 5'000'000;

  struct Shown {
    pid_t parent = 0;  // 0 for one whose parent is not shown
    std::string unit = "vte-spawn-1.scope";
    std::string variables = {};
    std::string program = "/usr/bin/env";
    char state = 'S';
  };

  // Its number counts from kFirst.
  void show(pid_t number, const Shown& process) {
    const std::string folder = processes_ / std::to_string(kFirst + number);
    const pid_t parent = process.parent == 0 ? 1 : kFirst + process.parent;
    writeFile(folder + "/stat",
              std::to_string(kFirst + number) + " (a) b) " + process.state + " " + std::to_string(parent) + " 1 1 0\n");
    writeFile(folder + "/cgroup", kUser + process.unit + "\n");
    writeFile(folder + "/environ", process.variables);
    std::filesystem::create_symlink(process.program, folder + "/exe");
  }
  void startedAs(pid_t number, const std::string& entry, pid_t started, Shown process) {
    process.variables = "A=1" + std::string(1, '\0') + "GIO_LAUNCHED_DESKTOP_FILE=/x/" + entry + std::string(1, '\0') +
                        "GIO_LAUNCHED_DESKTOP_FILE_PID=" + std::to_string(kFirst + started) + std::string(1, '\0');
    show(number, process);
  }
  std::vector<pid_t> copies(const std::string& snap = "") const {
    std::vector<pid_t> numbers =
        ApplicationProcesses(getuid(), processes_.path())
            .copies({.identifier = "org.example.Ed", .command = EntryCommand({}, ""), .snap = snap});
    for (pid_t& number : numbers) number -= kFirst;
    return numbers;
  }

  ScratchFolder processes_;
};

TEST_F(ProcessTreeTest, ACopyIsATreeOfProcesses) {
  show(1, {.unit = "app-org.example.Ed-1.scope"});
  show(2, {.parent = 1, .unit = "app-org.example.Ed-1.scope"});
  show(3, {.parent = 2});
  show(4, {.parent = 3, .unit = "app-org.example.Ed-4.scope"});
  show(5, {.unit = "app-org.example.Ed@5.service"});
  show(6, {.unit = "app-org.example.Ed@6.service", .state = 'Z'});
  show(7, {.unit = "app-org.example.Edit@7.service"});
  EXPECT_THAT(copies(), UnorderedElementsAre(1, 5));
}

TEST_F(ProcessTreeTest, WhoeverStartedItMarksTheFirstProcessOnly) {
  startedAs(1, "org.example.Ed.desktop", 1, {});
  startedAs(2, "org.example.Ed.desktop", 1, {});
  startedAs(3, "my.org.example.Ed.desktop", 3, {});
  // Another application in its unit.
  startedAs(4, "org.example.Browser.desktop", 4, {.unit = "app-org.example.Ed-9.scope"});
  // A terminal's mark, inherited from outside of the unit.
  startedAs(5, "org.example.Terminal.desktop", 6, {.unit = "app-org.example.Ed-5.scope"});
  startedAs(6, "org.example.Terminal.desktop", 6, {.unit = "app-org.example.Terminal-6.scope"});
  EXPECT_THAT(copies(), UnorderedElementsAre(1, 5));
}

TEST_F(ProcessTreeTest, SandboxesAreToldByTheirMarkOrUnit) {
  show(1, {.unit = "app-flatpak-org.example.Ed-1.scope", .program = "/usr/bin/bwrap"});
  show(2, {.parent = 1, .unit = "app-flatpak-org.example.Ed-1.scope"});
  show(3, {});
  writeFile(processes_ / "5000003/root/.flatpak-info", "[Application]\nname=org.example.Ed\nruntime=x\n");
  show(4, {});
  writeFile(processes_ / "5000004/root/.flatpak-info", "[Application]\nname=org.example.Editor\n");
  show(5, {.unit = "snap.studio.edit.0a1b2c3d-0a1b-0a1b-0a1b-0a1b2c3d4e5f.scope"});
  EXPECT_THAT(copies("studio.edit"), UnorderedElementsAre(2, 3, 5));
}

}  // namespace
}  // namespace vantory::test
