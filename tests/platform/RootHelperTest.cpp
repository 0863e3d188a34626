// The helper program with the superuser's rights, and a caller who means no good.
#include <gtest/gtest.h>
#include <linux/capability.h>
#include <sched.h>
#include <sys/mount.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <filesystem>

#include "platform/linux/helpers/Channel.h"
#include "platform/posix/files/SettingsText.h"
#include "platform/posix/processes/ChildProgram.h"
#include "tests/support/ScratchFolder.h"

namespace vantory::test {
namespace {

constexpr int kRefused = 77;

std::string helperPath() {
  return std::filesystem::read_symlink("/proc/self/exe").parent_path() / "vantory-root-helper";
}

class RootHelperTest : public testing::Test {
 protected:
  // A user that only this process and its children know, with a home in a scratch folder.
  void SetUp() override {
    if (geteuid() != 0) GTEST_SKIP() << "the helper works for the superuser only";
    if (unshare(CLONE_NEWNS) != 0 || mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0)
      GTEST_SKIP() << "mount namespaces are not permitted here";
    writeFile(scratch / "passwd", readFile("/etc/passwd") + "vanna:x:64201:64201::" + home + ":/bin/sh\n");
    ASSERT_EQ(mount((scratch / "passwd").c_str(), "/etc/passwd", nullptr, MS_BIND, nullptr), 0);
    chmod(scratch.path().c_str(), 0755);
    writeFile(foreign / "secret", "secret");
    writeFile(home + "/own", "own");
    for (const std::string& each : {home, home + "/own"}) ASSERT_EQ(chown(each.c_str(), id, id), 0);
  }
  void TearDown() override {
    if (child > 0) end();
    umount2("/etc/passwd", MNT_DETACH);
  }

  // Starts the helper as pkexec would for the user, but for the differences given.
  void start(std::vector<std::string> environment, std::vector<std::string> arguments = {}, bool bySuperuser = false) {
    ASSERT_EQ(seteuid(bySuperuser ? 0 : id), 0);
    auto ends = Channel::pair();
    ASSERT_EQ(seteuid(0), 0);
    ASSERT_TRUE(ends);
    const auto started = startChild({.path = helperPath(),
                                     .arguments = std::move(arguments),
                                     .environment = std::move(environment),
                                     .input = ends->other.descriptor()});
    ASSERT_TRUE(started) << started.error().text;
    child = *started;
    channel.emplace(std::move(ends->own));
  }
  void begin() {
    start({"PKEXEC_UID=" + std::to_string(id)});
    ASSERT_EQ(*receive(), Message{"ready"});
  }
  Result<Message> receive() { return channel->receive(std::chrono::seconds(20)); }
  // Ends the conversation; the helper's exit code.
  int end() {
    channel.reset();
    int status = 0;
    waitpid(child, &status, 0);
    child = -1;
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
  }
  bool does(const Message& request) {
    if (!channel->send(request)) return false;
    const Result<Message> answer = receive();
    EXPECT_TRUE(answer.ok()) << "the helper ended";
    return answer && *answer == Message{"done"};
  }
  void expectRefused(const Message& request) {
    EXPECT_FALSE(does(request)) << testing::PrintToString(request);
    EXPECT_EQ(readFile(foreign / "secret"), "secret");
  }

  static constexpr uid_t id = 64201;
  ScratchFolder scratch;
  const std::string home = scratch / "home";
  ScratchFolder foreign;
  pid_t child = -1;
  std::optional<Channel> channel;
};

TEST_F(RootHelperTest, ServesOnlyWhomPkexecNames) {
  const std::string caller = "PKEXEC_UID=" + std::to_string(id);
  for (const char* wrong : {"", "PKEXEC_UID=", "PKEXEC_UID=0", "PKEXEC_UID=4294967295",
                            "PKEXEC_UID=99999999999999999999", "PKEXEC_UID=1x"}) {
    start({wrong});
    EXPECT_FALSE(receive().ok()) << wrong;
    EXPECT_EQ(end(), kRefused) << wrong;
  }
  start({caller + "0"});  // another user's number, or nobody's
  EXPECT_EQ(end(), kRefused);
  start({caller}, {"--help"});
  EXPECT_EQ(end(), kRefused);
  start({caller}, {}, true);
  EXPECT_EQ(end(), kRefused) << "the caller is somebody else";
  start({caller, "HOME=" + foreign.path(), "XDG_DATA_HOME=" + foreign.path()});
  ASSERT_EQ(*receive(), Message{"ready"});
  expectRefused({"/bin/rm", "-Rdf", foreign / "secret"});
  EXPECT_EQ(end(), 0);
}

TEST_F(RootHelperTest, KnowsItsToolsInTheirShapesOnly) {
  begin();
  const std::string own = home + "/own";
  for (const Message& request : std::vector<Message>{
           {"/bin/sh", "-c", "true"},
           {""},
           {"/bin/rm"},
           {"/bin/rm", "-Rdf"},
           {"/bin/rm", "-Rdf", own, own},
           {"/bin/rm", "-rf", own},
           {"/bin/rm", "-Rdf", ""},
           {"/bin/rm", "-Rdf", "own"},
           {"/bin/chmod", "4755", own},
           {"/usr/sbin/chown", "root:wheel", own},
           {"/usr/sbin/chown", std::to_string(id), "/etc/passwd"},
           {"/usr/bin/chattr", "+a", own},
           {"machine-setting", "requireAdminPassword", "2"},
           {"machine-setting", "backupPath", "1"},
       })
    expectRefused(request);
  const std::string copy = home + "/copy";
  writeFile(copy, "older");
  ASSERT_EQ(chmod(own.c_str(), 04755), 0);
  expectRefused({"/bin/mv", "-f", own, copy});
  EXPECT_EQ(readFile(own) + readFile(copy), "ownolder");
  EXPECT_TRUE(does({"/bin/cp", "-f", "-p", "-R", own, copy})) << "it still serves";
  EXPECT_EQ(readFile(copy), "own");
  struct stat status {};
  ASSERT_EQ(stat(copy.c_str(), &status), 0);
  EXPECT_EQ(status.st_mode & 07777, 0755u) << "without special bits";
  EXPECT_EQ(end(), 0);
}

TEST_F(RootHelperTest, LeavesTheCallersHomeByNoWay) {
  begin();
  const std::string own = home + "/own";
  const std::string secret = foreign / "secret";
  ASSERT_EQ(symlink(foreign.path().c_str(), (home + "/way").c_str()), 0);
  ASSERT_EQ(lchown((home + "/way").c_str(), id, id), 0);
  ASSERT_EQ(symlink(foreign.path().c_str(), (home + "/roots").c_str()), 0);
  ASSERT_EQ(symlink(secret.c_str(), (home + "/link").c_str()), 0);
  const std::vector<std::string> outside = {
      secret,        home + "/.." + secret,     home + "x/file", home + "/way/secret", home + "/roots/secret",
      "/etc/passwd", "/proc/self/root" + secret};
  for (const std::string& path : outside) {
    expectRefused({"/bin/mv", "-f", path, home + "/got"});
    expectRefused({"/bin/mv", "-f", own, path + "-new"});
    expectRefused({"/bin/cp", "-f", "-p", "-R", path, home + "/got"});
    expectRefused({"/bin/cp", "-f", "-p", "-R", own, path});
    expectRefused({"/usr/bin/chattr", "+i", path});
    expectRefused({"/bin/mkdir", "-p", path + "-new/folder"});
    if (path == "/etc/passwd") continue;  // not even in a test that is to fail
    expectRefused({"/bin/rm", "-Rdf", path});
  }
  EXPECT_FALSE(exists(home + "/got"));
  EXPECT_TRUE(does({"/bin/cp", "-f", "-p", "-R", home + "/link", home + "/got"}));
  EXPECT_EQ(std::filesystem::read_symlink(home + "/got"), secret) << "the link, and not what it leads to";
  EXPECT_EQ(std::distance(std::filesystem::directory_iterator(foreign.path()), {}), 1);
  writeFile(home + "/tree/file", "x");
  ASSERT_EQ(symlink(foreign.path().c_str(), (home + "/tree/roots").c_str()), 0);
  EXPECT_TRUE(does({"/bin/cp", "-f", "-p", "-R", home + "/tree", home + "/copy"}));
  expectRefused({"/bin/rm", "-Rdf", home + "/copy/roots/secret"});
  for (const char* name : {"/copy", "/copy/file", "/copy/roots"}) {
    struct stat status {};
    ASSERT_EQ(lstat((home + name).c_str(), &status), 0);
    EXPECT_EQ(status.st_uid, id) << name;
  }
  for (const char* name : {"/link", "/tree"})
    EXPECT_TRUE(does({"/bin/rm", "-Rdf", home + name})) << "links themselves are the caller's";
  EXPECT_EQ(readFile(secret), "secret");

  // A second name for somebody else's file does not make it the caller's to read or to lock.
  ASSERT_EQ(chmod(secret.c_str(), 0600), 0);
  std::error_code failure;
  std::filesystem::create_hard_link(secret, home + "/second", failure);
  if (!failure) {
    expectRefused({"/bin/cp", "-f", "-p", "-R", home + "/second", home + "/got"});
    expectRefused({"/usr/bin/chattr", "+i", home + "/second"});
    expectRefused({"/usr/bin/touch", "-c", home + "/second"});
  }
}

TEST_F(RootHelperTest, KeepsTheStandardFolders) {
  writeFile(home + "/.config/user-dirs.dirs", "XDG_DESKTOP_DIR=\"$HOME/Pult\"\n");
  for (const char* name : {"/Library/Preferences/x", "/Pult/x", "/Documents/x"}) writeFile(home + name, "");
  begin();
  for (const char* path :
       {"", "/", "/./", "//Library", "/Library/Preferences/", "/./Documents", "/Pult", "/Desktop/.."}) {
    expectRefused({"/bin/mv", "-f", home + path, home + "/got"});
    expectRefused({"/bin/rm", "-Rdf", home + path});
    expectRefused({"/usr/bin/chattr", "+i", home + path});
  }
  makeFolders(home + "/other way");
  ASSERT_EQ(mount((home + "/Library").c_str(), (home + "/other way").c_str(), nullptr, MS_BIND, nullptr), 0);
  expectRefused({"/usr/bin/chattr", "+i", home + "/other way"});
  EXPECT_EQ(umount2((home + "/other way").c_str(), MNT_DETACH), 0);
  EXPECT_TRUE(exists(home + "/Library/Preferences/x") && exists(home + "/Pult/x") && exists(home + "/Documents/x"));
  EXPECT_TRUE(does({"/bin/rm", "-Rdf", home + "/Library/Preferences/x"}));
}

TEST_F(RootHelperTest, KeepsNoCapabilityThatFilesDoNotTake) {
  begin();
  const std::string status = readFile("/proc/" + std::to_string(child) + "/status");
  for (const char* set : {"CapPrm:\t", "CapEff:\t"}) {
    const std::size_t start = status.find(set);
    ASSERT_NE(start, std::string::npos);
    const auto held = std::stoull(status.substr(start + 8, 16), nullptr, 16);
    for (const int capability : {CAP_KILL, CAP_SYS_MODULE, CAP_SYS_PTRACE, CAP_SYS_ADMIN, CAP_MKNOD, CAP_SYSLOG})
      EXPECT_EQ(held >> capability & 1, 0u) << set << capability;
  }
}

TEST_F(RootHelperTest, EndsWithWhatIsNoMessage) {
  for (const std::string& bytes : {std::string("no end"), std::string(kMaxMessageBytes + 1, '\0'), std::string()}) {
    begin();
    ASSERT_EQ(::send(channel->descriptor(), bytes.data(), bytes.size(), 0), static_cast<ssize_t>(bytes.size()));
    EXPECT_FALSE(receive().ok());
    EXPECT_EQ(end(), 0);
  }
  begin();
  EXPECT_FALSE(does(Message(kMaxMessageBytes / 2, ""))) << "a great many empty words";
  EXPECT_FALSE(does({"/bin/mkdir", "-p", home + "/" + std::string(60000, 'x')}));
  std::string deep = home;
  for (int i = 0; i < 20000; ++i) deep += "/x";
  EXPECT_FALSE(does({"/bin/rm", "-Rdf", deep + "/.."}));
  EXPECT_FALSE(does({"/bin/mkdir", "-p", deep}));
}

TEST(SettingsTextTest, SetsOneNumberAndKeepsAllElse) {
  const std::string other = "<key>name</key>\n<string> a &amp; <![CDATA[<b>]]>  </string>\n";
  const auto settings = [&](const std::string& entry) {
    return "<?xml version=\"1.0\"?>\n<!-- ours -->\n<plist version=\"1.0\">\n<dict>\n" + other + entry +
           "</dict>\n</plist>\n";
  };
  const auto changed = [](const std::string& text) { return withSetting(text, "flag", 1, "settings"); };
  EXPECT_EQ(*changed(settings("")), settings("\t<key>flag</key><integer>1</integer>\n"));
  for (const char* before : {"<key>flag</key><integer>0</integer>", "<key>flag</key><true/>",
                             "<key>flag</key><array><string>x</string></array>"})
    EXPECT_EQ(*changed(settings(before)), settings("<key>flag</key><integer>1</integer>")) << before;
  for (const char* damaged : {"bplist00", "<plist><array/></plist>", "<dict/>", "<plist><dict>", "\xff\xfe<\0p\0"})
    EXPECT_FALSE(changed(damaged).ok()) << damaged;
}

}  // namespace
}  // namespace vantory::test
