// What every platform's desktop does for the program.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include "tests/platform/Desks.h"
#include "tests/support/DesktopFolders.h"

namespace vantory::test {
namespace {

using ::testing::IsSupersetOf;
using Answer = TaskClient::Answer;

class SessionTest : public SystemTest {
 protected:
  void SetUp() override {
    if (const std::string reason = missingForDesk(GetParam()); !reason.empty()) GTEST_SKIP() << reason;
    desk = makeDesk(GetParam());
  }
  bool runs(const std::string& identifier) { return *desk->workspace().isRunning(identifier); }

  // Its own in each process: a test that asks all copies to quit must not reach those of another.
  const std::string kEd = "org.example.Ed" + std::to_string(getpid());
  const std::string kOther = kEd + "2";
  std::unique_ptr<Desk> desk;
};

VANTORY_ON_EACH_SYSTEM(SessionTest);

TEST_P(SessionTest, EveryCopyIsAskedToQuitAndNoneIsMadeTo) {
  desk->install(kEd);
  desk->install(kOther);
  EXPECT_FALSE(runs(kEd));
  EXPECT_TRUE(desk->workspace().quitApplication("Ed", kEd)) << "none runs";
  desk->start(kOther, Desk::Manners::QuitsWhenAsked);
  desk->start(kEd, Desk::Manners::QuitsWhenAsked);
  EXPECT_TRUE(soon([this] { return runs(kEd); }));
  EXPECT_FALSE(runs("org.example.Ed"));
  EXPECT_TRUE(*desk->workspace().canBeAskedToQuit(kEd));
  EXPECT_TRUE(desk->workspace().quitApplication("Ed", kEd));
  EXPECT_TRUE(soon([this] { return !runs(kEd); }));
  EXPECT_TRUE(runs(kOther));
  desk->start(kEd, Desk::Manners::CannotBeAsked);
  EXPECT_TRUE(soon([this] { return runs(kEd); }));
  EXPECT_EQ(desk->workspace().quitApplication("Ed", kEd).error().code, std::errc::operation_not_supported);
  EXPECT_TRUE(runs(kEd));
}

TEST_P(SessionTest, AnApplicationIsFoundInAnyCaseAndOpensFiles) {
  const ScratchFolder folder;
  const std::string film = folder / (isMac ? "my film; touch 'x'.fcp" : "my film;\n\xff touch 'x'.fcp");
  writeFile(film, "data");
  for (const auto& failed : {desk->workspace().launchApplication(kEd), desk->workspace().openFile(film, kEd)})
    EXPECT_FALSE(failed) << "it is not installed";
  EXPECT_EQ(desk->workspace().applicationPath(kEd), std::nullopt);
  desk->install(kEd);
  EXPECT_NE(desk->workspace().applicationPath("org.example.ed" + kEd.substr(14)), std::nullopt);
  EXPECT_TRUE(desk->workspace().openFile(film, "org.example.ed" + kEd.substr(14)));
  EXPECT_EQ(desk->opened(), film);
  EXPECT_TRUE(desk->workspace().launchApplication(kEd));
  EXPECT_EQ(desk->opened(), "");
}

TEST_P(SessionTest, DocumentsGoToWhoeverTakesThem) {
  const ScratchFolder folder;
  writeFile(folder / "a note; x.txt", "data");
  desk->install(kEd);
  for (const std::string& item :
       {folder / "a note; x.txt", std::string("https://example.org/report?app=v&version=1")}) {
    EXPECT_TRUE(desk->documents().open(item));
    EXPECT_EQ(desk->opened(), item);
  }
  EXPECT_TRUE(desk->documents().mail(folder / "a note; x.txt"));
  EXPECT_EQ(desk->opened(), folder / "a note; x.txt");
  for (const std::string& none : {folder / "missing", std::string("-a"), std::string("file:///missing")})
    EXPECT_FALSE(desk->documents().open(none)) << none;
}

TEST_P(SessionTest, WhatOpensProjectsIsSetAndTold) {
  EXPECT_FALSE(desk->handlers().typeOfExtension("").ok());
  desk->install(kEd);
  const std::string type = *desk->handlers().typeOfExtension("fcp");
  EXPECT_TRUE(desk->handlers().setDefaultViewer(type, kEd));
  EXPECT_EQ(desk->handlers().defaultViewer(type), "org.example.ed" + kEd.substr(14));
  EXPECT_EQ(desk->handlers().defaultViewer("no.such-type"), std::nullopt);
}

TEST_P(SessionTest, MessagesReachWhoeverListens) {
  const auto sent = [this](const std::string& service, const TaskMessage& message) {
    return *desk->client().send(service, message);
  };
  EXPECT_EQ(sent("QWProClientCallback", {"postErrorString:", {"x"}}), Answer::NotRegistered);
  desk->attach(Desk::Listener::TaskClient, "QWProClientCallback", "postErrorString:userInfo:");
  EXPECT_EQ(sent("QWProClientCallback", {"postErrorString:userInfo:", {"Größe, \"x\" $y", "Vantory"}}),
            Answer::Received);
  EXPECT_THAT(desk->heard(), IsSupersetOf({"Größe, \"x\" $y", "Vantory"}));
  EXPECT_EQ(sent("QWProClientCallback", {"postErrorString:", {"x"}}), Answer::NotUnderstood);
  EXPECT_EQ(sent("QWGearwrightClientCallback", {"postErrorString:userInfo:", {"x", "y"}}), Answer::NotRegistered);
  desk->attach(Desk::Listener::Notifications);
  EXPECT_TRUE(desk->notifications().post("Backup failed", "Disk -e \"full\"", "context"));
  EXPECT_THAT(desk->heard(), IsSupersetOf({"Backup failed", "Disk -e \"full\""}));
  desk->attach(Desk::Listener::Announcements);
  EXPECT_TRUE(desk->announcements().announce("QWShortcutKeysReload"));
  EXPECT_THAT(desk->heard(), IsSupersetOf({"QWShortcutKeysReload"}));
}

}  // namespace
}  // namespace vantory::test
