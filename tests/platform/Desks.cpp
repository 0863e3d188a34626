// Linux's desktop, with real programs and a real bus, and a Mac's, with stand-ins for its tools.
#include "tests/platform/Desks.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <deque>
#include <filesystem>
#include <sstream>

#include "base/Text.h"
#include "platform/linux/helpers/DesktopHelper.h"
#include "platform/linux/session/DesktopSession.h"
#include "platform/linux/session/LinuxDesktop.h"
#include "platform/macos/files/MacFileSystem.h"
#include "platform/macos/session/MacDesktop.h"
#include "platform/posix/files/Descriptor.h"
#include "tests/darwin/Volume.h"
#include "tests/platform/StandInTools.h"
#include "tests/support/DesktopFolders.h"
#include "tests/support/FakePlatform.h"
#include "tests/support/SessionBus.h"

namespace vantory::test {

namespace {

class LinuxDesk : public Desk {
 public:
  LinuxDesk() {
    users_.process = User{getuid(), getgid(), desktop_.home()};
    desktop_.script("bin/xdg-email", "#!/bin/sh\n[ \"$1 $2\" = '--utf8 --attach' ] && shift 2 && " + note_ + "\n");
  }

  // Lets the programs end that were started here.
  ~LinuxDesk() override { const Descriptor end(open((desktop_ / "never").c_str(), O_WRONLY | O_NONBLOCK | O_CLOEXEC)); }

  Workspace& workspace() override { return workspace_; }
  Documents& documents() override { return documents_; }
  DefaultHandlers& handlers() override { return handlers_; }
  TaskClient& client() override { return client_; }
  DesktopNotifications& notifications() override { return notifications_; }
  Announcements& announcements() override { return announcements_; }

  void install(const std::string& identifier) override {
    const std::string types = "application/x-vantory-fcp;x-scheme-handler/https;text/plain;";
    const std::string program =
        desktop_.script("bin/" + identifier, "#!/bin/sh\n" + note_ + "\nread x < $HOME/never\n");
    desktop_.declare(identifier, program + " %u", "MimeType=" + types + "\n");
    mkfifo((desktop_ / "never").c_str(), 0600);
    std::string defaults = "[Default Applications]\n";
    for (const char* type : {"x-scheme-handler/https", "text/plain"})
      defaults += std::string(type) + "=" + identifier + ".desktop\n";
    writeFile(desktop_ / ".config/mimeapps.list", defaults);
  }
  void start(const std::string& identifier, Manners manners) override {
    if (manners == Manners::QuitsWhenAsked)
      peers_.push_back(bus_.start("application.py", {identifier, "quit"}));
    else
      started_.emplace_back(desktop_ / "bin/" + identifier);
  }
  std::string opened() override {
    if (!soon([this] { return exists(desktop_ / "given"); })) return "nothing";
    const std::string given = readFile(desktop_ / "given");
    std::filesystem::remove(desktop_ / "given");
    return given;
  }
  void attach(Listener listener, const std::string& service, const std::string& message) override {
    std::string member = message;
    std::erase(member, ':');
    if (listener == Listener::TaskClient)
      peers_.push_back(bus_.start("task_client.py", {service, "answers", member}));
    else if (listener == Listener::Notifications)
      peers_.push_back(bus_.start("notification_server.py", {}));
    else
      peers_.push_back(bus_.start("announcement_listener.py"));
  }
  std::vector<std::string> heard() override { return heardBy(peers_.back()); }

 private:
  DesktopFolders desktop_;
  const std::string note_ = "printf %s \"$1\" > $HOME/new; mv $HOME/new $HOME/given";
  // A virtual file system, where one is installed, takes "https" for "http".
  SessionBus bus_{[this] {
    writeFile(desktop_ / "services/org.gtk.vfs.Daemon.service",
              "[D-BUS Service]\nName=org.gtk.vfs.Daemon\nExec=/usr/libexec/gvfsd --no-fuse\n");
    return desktop_ / "services";
  }()};
  std::deque<Running> started_;
  std::vector<HelperProcess> peers_;
  FakeUsers users_;
  DesktopHelper helper_{[this] { return desktopHelperProgram(users_); }};
  LinuxWorkspace workspace_{helper_, users_};
  LinuxDocuments documents_{helper_};
  LinuxDefaultHandlers handlers_{users_};
  LinuxTaskClient client_{helper_, users_};
  LinuxDesktopNotifications notifications_{helper_, users_};
  LinuxAnnouncements announcements_{helper_, users_};
};

class MacDesk : public Desk {
 public:
  MacDesk() {
    users_.process = User{getuid(), getgid(), scratch_.path()};
    writeFile(tools_ / "installed", "");
    tools_.put("/usr/bin/open", R"(
      refuse() { echo "$1" >&2; exit 1; }
      case $1 in
        -a) [ "$2" = /Mail.app ] && item=$3 ;;
        -b) grep -ixqF -- "$2" installed || refuse 'failed with error -10814.'
            item=${3:-} ;;
        /*) [ -e "$1" ] || refuse "The file $1 does not exist."
            item=$1 ;;
        https://*) item=$1 ;;
        *) exit 9 ;;
      esac
      printf %s "$item" > new; mv new given)");
    tools_.answer(R"sh(
      question=$1
      shift
      case $question in
        quit) [ ! -e stubborn ] || { echo 'execution error: not authorized (-1743)' >&2; exit 1; }
              kill "$@" ;;
        find) grep -ixqF -- "$1" installed && echo "/Applications/$1.app" ;;
        mailProgram) [ ! -s installed ] || echo /Mail.app ;;
        type) [ -z "$1" ] || echo "com.example.$1" ;;
        setViewer) grep -ixqF -- "$2" installed || { echo 'error -54' >&2; exit 1; }
                   echo "$2" > "viewer of $1" ;;
        viewer) cat "viewer of $1" 2> /dev/null || true ;;
        tell) shift
              [ "$1" = "$(cat message)" ] || { echo unknown; exit; }
              printf '%s\n' "$@" >> heard; echo received ;;
        notify|announce) printf '%s\n' "$@" >> heard ;;
        *) exit 9 ;;
      esac)sh");
  }
  ~MacDesk() override { darwin::volume().ports.clear(); }

  Workspace& workspace() override { return workspace_; }
  Documents& documents() override { return documents_; }
  DefaultHandlers& handlers() override { return handlers_; }
  TaskClient& client() override { return client_; }
  DesktopNotifications& notifications() override { return notifications_; }
  Announcements& announcements() override { return announcements_; }

  void install(const std::string& identifier) override {
    writeFile(scratch_ / (identifier + ".app/Contents/Info.plist"),
              "<plist><dict><key>CFBundleIdentifier</key><string>" + identifier +
                  "</string><key>CFBundleExecutable</key><string>Main</string></dict></plist>");
    writeFile(tools_ / "installed", readFile(tools_ / "installed") + identifier + "\n");
  }
  void start(const std::string& identifier, Manners manners) override {
    const std::string program = scratch_ / (identifier + ".app/Contents/MacOS/Main");
    makeFolders(program.substr(0, program.rfind('/')));
    std::filesystem::copy_file("/bin/sleep", program, std::filesystem::copy_options::skip_existing);
    started_.emplace_back(program, std::vector<std::string>{"60"});
    if (manners == Manners::CannotBeAsked) writeFile(tools_ / "stubborn", "");
  }
  std::string opened() override { return exists(tools_ / "given") ? readFile(tools_ / "given") : "nothing"; }
  void attach(Listener listener, const std::string& service, const std::string& message) override {
    if (listener != Listener::TaskClient) return;
    darwin::volume().ports.insert("com.quarrywell." + service);
    writeFile(tools_ / "message", message + "\n");
  }
  std::vector<std::string> heard() override {
    std::vector<std::string> words;
    std::istringstream text(readFile(tools_ / "heard"));
    for (std::string word; std::getline(text, word);) words.push_back(word);
    return words;
  }

 private:
  StandInTools tools_;
  ScratchFolder scratch_;
  std::deque<Running> started_;
  FakeUsers users_;
  PreferencesDaemon daemon_{users_};
  MacFileSystem files_;
  MacWorkspace workspace_{files_, users_, daemon_};
  MacDocuments documents_;
  MacDefaultHandlers handlers_;
  MacTaskClient client_;
  MacDesktopNotifications notifications_;
  MacAnnouncements announcements_;
};

}  // namespace

std::string missingForDesk(System system) {
  if (system == System::Mac) return "";
  for (const char* tool : {"/usr/bin/update-mime-database", "/usr/bin/gio"})
    if (!exists(tool)) return std::string(tool) + " is not installed";
  return SessionBus::missing();
}

std::unique_ptr<Desk> makeDesk(System system) {
  if (system == System::Mac) return std::make_unique<MacDesk>();
  return std::make_unique<LinuxDesk>();
}

}  // namespace vantory::test
