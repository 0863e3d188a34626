// The superuser of a Mac at work for a user, who owns the folders and means no good.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <linux/fs.h>
#include <stdio.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <atomic>
#include <filesystem>
#include <thread>

#include "platform/PrivilegedRunner.h"
#include "platform/linux/rights/LinuxAdministratorDisk.h"
#include "platform/macos/rights/MacAdministratorDisk.h"
#include "platform/macos/rights/MachineLog.h"
#include "platform/macos/system/MacStandardFolders.h"
#include "platform/posix/rights/AdministratorTools.h"
#include "tests/support/FaultyFileSystem.h"
#include "tests/support/ScratchFolder.h"

namespace vantory::test {
namespace {

using Arguments = std::vector<std::string>;

class MacAdministratorTest : public testing::Test {
 protected:
  void SetUp() override {
    if (geteuid() != 0) GTEST_SKIP() << "only the superuser works for others";
    for (const std::string& each : {home, home + "/way", home + "/Library/Preferences", shared}) makeFolders(each);
    makeFolders(machine / "Library");
    writeFile(home + "/own", "own");
    writeFile(foreign / "secret", "secret");
    chmod((foreign / "secret").c_str(), 0600);
    for (const char* each : {"", "/way", "/own", "/Library"}) give(home + each);
  }
  static void give(const std::string& path) { ASSERT_EQ(lchown(path.c_str(), kUser, kUser), 0); }
  static struct stat status(const std::string& path) {
    struct stat result {};
    EXPECT_EQ(lstat(path.c_str(), &result), 0) << path;
    return result;
  }
  bool does(const std::string& tool, const Arguments& arguments) { return tools.perform(tool, arguments).ok(); }
  void copies(const std::string& from, const std::string& to, bool expected = true) {
    EXPECT_EQ(does("/bin/cp", {"-f", "-p", "-R", from, to}), expected) << from << " to " << to;
  }
  // Each tool by itself, at the path and towards it.
  void expectOutOfReach(const std::string& path) {
    copies(path, home + "/got", false);
    copies(home + "/own", path, false);
    EXPECT_FALSE(does("/bin/mv", {"-f", path, home + "/got"})) << path;
    EXPECT_FALSE(does("/bin/mv", {"-f", home + "/own", path + "-new"})) << path;
    EXPECT_FALSE(does("/bin/mkdir", {"-p", path + "-new/folder"})) << path;
    EXPECT_FALSE(does("/usr/bin/chattr", {"+i", path})) << path;
    EXPECT_FALSE(does("/usr/bin/touch", {"-c", path}) && exists(path)) << path;
    if (!does("/bin/rm", {"-Rdf", path})) return;
    EXPECT_FALSE(exists(path)) << "done is what is not there";
  }

  static constexpr uid_t kUser = 64202;
  const ScratchFolder machine, foreign;
  const std::string home = machine / "Users/anna";
  const std::string shared = machine / "Users/Shared";
  const User user{kUser, kUser, home};
  const MacStandardFolders standard{machine.path()};
  AdministratorTools tools{user, standard, std::make_unique<MacAdministratorDisk>(user, std::vector{shared})};
};

TEST_F(MacAdministratorTest, LeavesTheHomeByNoWay) {
  const std::string secret = foreign / "secret";
  ASSERT_EQ(symlink(foreign.path().c_str(), (home + "/link").c_str()), 0);
  ASSERT_EQ(symlink(secret.c_str(), (home + "/file-link").c_str()), 0);
  for (const std::string& path :
       {secret, home + "/.." + secret, home + "x/file", home + "/link/secret", home + "/way/../../../../.." + secret,
        machine / "Users/bob/file", home, machine / "Library/LaunchDaemons/com.quarrywell.x.plist"})
    expectOutOfReach(path);
  copies(home + "/file-link", home + "/link-copy");
  EXPECT_TRUE(std::filesystem::is_symlink(home + "/link-copy")) << "and not what it leads to";
  EXPECT_FALSE(does("/usr/bin/chattr", {"+i", home + "/file-link"}));
  for (const char* folder : {"/Library", "/Library/Preferences", "/./Library/"})
    EXPECT_FALSE(does("/bin/rm", {"-Rdf", home + folder}) || does("/bin/mv", {"-f", home + folder, home + "/got"}) ||
                 does("/usr/bin/chattr", {"+i", home + folder}));
  // A second name for somebody else's file gives no right to it.
  ASSERT_EQ(link(secret.c_str(), (home + "/second").c_str()), 0);
  copies(home + "/second", home + "/got", false);
  writeFile(home + "/tree/file", "x");
  ASSERT_EQ(link(secret.c_str(), (home + "/tree/second").c_str()), 0);
  copies(home + "/tree", home + "/got", false);
  // Nor where it is the only name left.
  writeFile(foreign / "old", "secret");
  chmod((foreign / "old").c_str(), 0600);
  ASSERT_EQ(rename((foreign / "old").c_str(), (home + "/old").c_str()), 0);
  copies(home + "/old", home + "/got", false);
  for (const char* tool : {"/usr/bin/chattr", "/usr/bin/touch"})
    EXPECT_FALSE(does(tool, {std::string(tool).ends_with("touch") ? "-c" : "+i", home + "/second"})) << tool;
  EXPECT_FALSE(exists(home + "/got"));
  EXPECT_EQ(readFile(secret), "secret");
  EXPECT_EQ(std::distance(std::filesystem::directory_iterator(foreign.path()), {}), 1);
}

TEST_F(MacAdministratorTest, GivesWhatItMakesToTheOwner) {
  const std::string from = home + "/from";
  writeFile(from + "/file", "content");
  ASSERT_EQ(symlink("file", (from + "/link").c_str()), 0);
  ASSERT_EQ(chmod((from + "/file").c_str(), 06755), 0);
  const std::string list = "anna reads";
  ASSERT_EQ(setxattr((from + "/file").c_str(), "user.darwin.list", list.data(), list.size(), 0), 0);
  ASSERT_TRUE(does("/usr/bin/chattr", {"+i", from + "/file"}));
  copies(from, home + "/way/copy");
  for (const char* name : {"", "/file", "/link"}) EXPECT_EQ(status(home + "/way/copy" + name).st_uid, kUser) << name;
  EXPECT_EQ(status(home + "/way/copy/file").st_mode & 07777, 0755u) << "no special bits";
  char kept[32];
  EXPECT_EQ(getxattr((home + "/way/copy/file").c_str(), "user.darwin.list", kept, sizeof kept), 10);
  EXPECT_TRUE(does("/bin/mv", {"-f", home + "/way/copy/file", home + "/moved"})) << "the lock was not copied";
  EXPECT_FALSE(does("/bin/mv", {"-f", from + "/file", home + "/moved2"})) << "it is locked";
  EXPECT_TRUE(does("/usr/bin/chattr", {"-i", from + "/file"}));
  EXPECT_TRUE(does("/bin/mv", {"-f", from + "/file", home + "/moved2"}));
  EXPECT_TRUE(does("/bin/mkdir", {"-p", home + "/a/b"}) && does("/bin/mkdir", {"-p", shared + "/a"}));
  EXPECT_EQ(status(home + "/a/b").st_uid, kUser);
  EXPECT_EQ(status(home + "/a").st_mode & 0777, 0700u);
  EXPECT_EQ(status(shared + "/a").st_mode & 0777, 0755u);
  copies(home + "/own", shared + "/own");
  EXPECT_EQ(status(shared + "/own").st_uid, kUser) << "its owner is kept";
  EXPECT_TRUE(does("/bin/rm", {"-Rdf", home + "/way/copy"}) && !exists(home + "/way/copy"));
  EXPECT_TRUE(does(kMachineSettingTool, {kAdministratorSetting, "1"}));
  EXPECT_EQ(status(machine / "Library/Preferences/com.quarrywell.Vantory.plist").st_mode & 0777, 0644u);
}

// As the tool does, on either system's disk, and never at the cost of what is there.
TEST_F(MacAdministratorTest, CopiesOverFilesAndIntoFoldersOnly) {
  AdministratorTools linux{user, standard, std::make_unique<LinuxAdministratorDisk>(user, std::vector{shared})};
  writeFile(home + "/folder/inside", "inside");
  writeFile(home + "/taken/own/kept", "kept");
  ASSERT_EQ(symlink("nowhere", (home + "/dangling").c_str()), 0);
  for (AdministratorTools* each : {&tools, &linux}) {
    const auto copied = [&](const std::string& from, const std::string& to) {
      return each->perform("/bin/cp", {"-f", "-p", "-R", home + from, home + to}).ok();
    };
    writeFile(home + "/file", "file");
    std::filesystem::remove_all(home + "/into");
    makeFolders(home + "/into");
    EXPECT_FALSE(copied("/folder", "/file")) << "a folder over a file";
    EXPECT_EQ(readFile(home + "/file"), "file");
    EXPECT_TRUE(copied("/own", "/file"));
    EXPECT_EQ(readFile(home + "/file"), "own");
    for (const char* from : {"/folder", "/own", "/dangling"}) EXPECT_TRUE(copied(from, "/into")) << from;
    EXPECT_EQ(readFile(home + "/into/folder/inside") + readFile(home + "/into/own"), "insideown");
    EXPECT_EQ(std::filesystem::read_symlink(home + "/into/dangling"), "nowhere");
    EXPECT_EQ(status(home + "/into/dangling").st_uid, kUser);
    EXPECT_FALSE(copied("/folder", "/into") || copied("/dangling", "/into")) << "what is there already";
    EXPECT_FALSE(copied("/own", "/taken")) << "a file over a folder";
    EXPECT_FALSE(copied("/folder", "/folder") || copied("/taken", "/taken/own/x")) << "into itself";
  }
  EXPECT_EQ(readFile(home + "/taken/own/kept"), "kept");
}

TEST_F(MacAdministratorTest, CopiesForNobodyWhoIsGone) {
  auto ends = StreamChannel::pair();
  ASSERT_TRUE(ends.ok());
  AdministratorTools served{user, standard, std::make_unique<MacAdministratorDisk>(user, std::vector{shared}),
                            [&] { return ends->own.isOpen(); }};
  makeFolders(home + "/folder");
  for (int i = 0; i < 3; ++i) writeFile(home + "/folder/" + std::to_string(i), "x");
  const Arguments call{"-f", "-p", "-R", home + "/folder", home + "/copy"};
  EXPECT_TRUE(served.perform("/bin/cp", call).ok());
  std::filesystem::remove_all(home + "/copy");
  ends->other.close();
  EXPECT_FALSE(served.perform("/bin/cp", call).ok());
  EXPECT_FALSE(exists(home + "/copy"));
}

// A disk on which what is there cannot be looked at.
template <class Disk>
struct BlindDisk : Disk {
  using Disk::Disk;
  FileSystem& machineFiles() override {
    blind.fail(Operation::Info, std::errc::io_error, FaultyFileSystem::kEveryCall);
    return blind;
  }
  FaultyFileSystem blind{Disk::machineFiles()};
};

// A folder that cannot be told from a protected one stays where it is, and so does what may be a job.
TEST_F(MacAdministratorTest, MovesNothingThatItCannotLookAt) {
  AdministratorTools blind{user, standard,
                           std::make_unique<BlindDisk<MacAdministratorDisk>>(user, std::vector{shared})};
  EXPECT_FALSE(blind.perform("/bin/mv", {"-f", home + "/Library/Preferences", home + "/got"}).ok());
  EXPECT_FALSE(blind.perform("/bin/rm", {"-Rdf", home + "/own"}).ok());
  EXPECT_TRUE(exists(home + "/Library/Preferences") && exists(home + "/own"));
  AdministratorTools linux{user, standard,
                           std::make_unique<BlindDisk<LinuxAdministratorDisk>>(user, std::vector{shared})};
  const std::string job = machine / "Library/LaunchDaemons/com.quarrywell.x.plist";
  writeFile(job, "job");
  chmod(machine.path().c_str(), 0755);
  EXPECT_FALSE(linux.perform("/bin/mv", {"-f", home + "/own", job}).ok());
  EXPECT_EQ(readFile(job), "job");
}

// While the superuser works, the user exchanges a folder on the way for a link, and a file for another's, again and
// again.
TEST_F(MacAdministratorTest, IsNotLedAwayInTheMiddle) {
  const std::string way = home + "/way", secret = foreign / "secret";
  ASSERT_EQ(symlink(foreign.path().c_str(), (home + "/trap").c_str()), 0);
  ASSERT_EQ(link(secret.c_str(), (home + "/second").c_str()), 0);
  writeFile(home + "/first", "first");
  give(home + "/first");
  std::atomic<bool> ends = false;
  std::thread user([&] {
    while (!ends) {
      renameat2(AT_FDCWD, way.c_str(), AT_FDCWD, (home + "/trap").c_str(), RENAME_EXCHANGE);
      renameat2(AT_FDCWD, (home + "/first").c_str(), AT_FDCWD, (home + "/second").c_str(), RENAME_EXCHANGE);
    }
  });
  int copied = 0;
  for (int i = 0; i < 100; ++i) {
    for (const Arguments& call : {Arguments{"/bin/cp", "-f", "-p", "-R", home + "/own", way + "/secret"},
                                  {"/bin/rm", "-Rdf", way + "/secret"},
                                  {"/bin/mkdir", "-p", way + "/made"},
                                  {"/usr/bin/chattr", "+i", home + "/first"},
                                  {"/usr/bin/chattr", "-i", home + "/first"},
                                  {"/usr/bin/touch", "-c", home + "/first"},
                                  {"/bin/cp", "-f", "-p", "-R", home + "/first", home + "/got"}})
      copied += does(call.front(), {call.begin() + 1, call.end()});
    EXPECT_FALSE(exists(home + "/got") && readFile(home + "/got") == "secret");
  }
  ends = true;
  user.join();
  EXPECT_GT(copied, 0);
  EXPECT_EQ(readFile(secret), "secret");
  EXPECT_EQ(status(secret).st_uid, 0u);
  std::uint32_t flags = 0;
  EXPECT_LT(getxattr(secret.c_str(), "user.darwin.flags", &flags, sizeof flags), 0) << "locked";
  EXPECT_EQ(std::distance(std::filesystem::directory_iterator(foreign.path()), {}), 1);
}

TEST_F(MacAdministratorTest, AnswersWithCauseAndCure) {
  const Error cause{std::errc::operation_not_permitted, "no", "allow it", true};
  const Error told = meaningOf(answerFor(cause)).error();
  EXPECT_EQ(told.code, cause.code);
  EXPECT_EQ(told.text + told.cure, "noallow it");
  EXPECT_TRUE(told.consentMissing);
  EXPECT_FALSE(meaningOf(answerFor(Error{std::errc::io_error, "broken"})).error().consentMissing);
}

TEST_F(MacAdministratorTest, KeepsNothingButLogsForTheMachine) {
  const std::string folder = machine / "Library/Logs/Quarrywell";
  MachineLog log(standard);
  auto ends = StreamChannel::pair();
  ASSERT_TRUE(ends.ok());
  std::thread superuser([&] {
    while (const auto request = ends->own.receive()) {
      Descriptor file;
      const Status done = log.perform(*request, file);
      if (!ends->own.send(answerFor(done), file.get())) return;
    }
  });
  {
    RootConversation conversation(std::move(ends->other));
    MachineLogFiles files(standard, conversation);
    EXPECT_FALSE(files.makeFolder(machine / "Library/Else").ok() || files.remove(home + "/own.log").ok());
    ASSERT_TRUE(files.makeFolder(folder).ok());
    ASSERT_TRUE(files.write(folder + "/.x.new", "first\n", {}).ok());
    ASSERT_TRUE(files.move(folder + "/.x.new", folder + "/x.log").ok());
    auto opened = files.openForAppending(folder + "/x.log");
    ASSERT_TRUE(opened.ok()) << opened.error().text;
    std::string_view more = "second\n";
    EXPECT_TRUE((*opened)->append(more).ok());
    EXPECT_EQ(readFile(folder + "/x.log"), "first\nsecond\n");
    EXPECT_EQ(status(folder + "/x.log").st_mode & 07777, 0600u);
    ASSERT_EQ(symlink((foreign / "secret").c_str(), (folder + "/link.log").c_str()), 0);
    ASSERT_EQ(link((foreign / "secret").c_str(), (folder + "/second.log").c_str()), 0);
    for (const char* name : {"/link.log", "/second.log", "/x.plist"})
      EXPECT_FALSE(files.openForAppending(folder + name).ok()) << name;
    for (const Message& request : std::vector<Message>{{kMachineLog},
                                                       {kMachineLog, "write"},
                                                       {kMachineLog, "write", "../x.log", "x"},
                                                       {kMachineLog, "move", "x.log", "../../x.log"},
                                                       {kMachineLog, "open", "x.log", "", ""},
                                                       {kMachineLog, "remove", folder + "/x.log", ""},
                                                       {kMachineLog, "list", "x.log", ""}})
      EXPECT_FALSE(conversation.ask(request).ok()) << testing::PrintToString(request);
    EXPECT_FALSE(conversation.ask({std::string(kMaxMessageBytes, 'x')}).ok());
    EXPECT_TRUE(files.remove(folder + "/x.log").ok()) << "it still serves";
  }
  superuser.join();
  EXPECT_EQ(readFile(foreign / "secret"), "secret");
}

}  // namespace
}  // namespace vantory::test
