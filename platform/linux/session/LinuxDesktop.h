// What the user's desktop does: the interfaces that the helper program of the desktop answers.
#pragma once

#include <memory>
#include <mutex>

#include "platform/DefaultHandlers.h"
#include "platform/Documents.h"
#include "platform/Messaging.h"
#include "platform/Workspace.h"

namespace vantory {

class DesktopHelper;
class Users;

// A bundle identifier is the id of a desktop entry, without ".desktop", and the application's name on the session bus.
// Where there is neither such an entry nor a bus, nothing runs, and the helper program is not started.
class LinuxWorkspace : public Workspace {
 public:
  // Both outlive it.
  LinuxWorkspace(DesktopHelper& helper, const Users& users) : helper_(helper), users_(users) {}

  Result<bool> isRunning(const std::string& bundleIdentifier) const override;
  Result<bool> canBeAskedToQuit(const std::string& bundleIdentifier) const override;
  Status quitApplication(const std::string& name, const std::string& bundleIdentifier) override;
  std::optional<std::string> applicationPath(const std::string& bundleIdentifier) const override;
  Status launchApplication(const std::string& bundleIdentifier) override;
  Status openFile(const std::string& path, const std::string& bundleIdentifier) override;
  Status activateApplication(const std::string& bundleIdentifier) override;
  Status runScript(const std::string& script) override;

 private:
  bool mayRun(const std::string& bundleIdentifier) const;

  DesktopHelper& helper_;
  const Users& users_;
};

// The file manager is org.freedesktop.FileManager1, the mail program that of "xdg-email".
class LinuxDocuments : public Documents {
 public:
  // The helper outlives it.
  explicit LinuxDocuments(DesktopHelper& helper) : helper_(helper) {}

  Status open(const std::string& pathOrAddress) override;
  Status reveal(const std::vector<std::string>& paths) override;
  Status mail(const std::string& path) override;

 private:
  Status ask(const std::vector<std::string>& request);

  DesktopHelper& helper_;
};

// GIO notices a change of the list only after a while, so that a helper program that has changed it is not asked what
// it says: this one has a helper of its own and ends it then.
class LinuxDefaultHandlers : public DefaultHandlers {
 public:
  // `users` outlives it.
  explicit LinuxDefaultHandlers(const Users& users);
  ~LinuxDefaultHandlers() override;

  Result<std::string> typeOfExtension(const std::string& extension) const override;
  Status setDefaultViewer(const std::string& type, const std::string& bundleIdentifier) override;
  std::optional<std::string> defaultViewer(const std::string& type) const override;

 private:
  DesktopHelper& helper() const;
  DesktopHelper& helperThatSeesChanges() const;

  const Users& users_;
  mutable std::mutex mutex_;  // for all below
  mutable std::unique_ptr<DesktopHelper> helper_;
  mutable bool changed_ = false;  // by this helper
};

// Services are names on the session bus.
class LinuxTaskClient : public TaskClient {
 public:
  // Both outlive it.
  LinuxTaskClient(DesktopHelper& helper, const Users& users) : helper_(helper), users_(users) {}

  Result<Answer> send(const std::string& service, const TaskMessage& message) override;

 private:
  DesktopHelper& helper_;
  const Users& users_;
};

// org.freedesktop.Notifications on the session bus.
class LinuxDesktopNotifications : public DesktopNotifications {
 public:
  // Both outlive it.
  LinuxDesktopNotifications(DesktopHelper& helper, const Users& users) : helper_(helper), users_(users) {}

  Status post(const std::string& title, const std::string& text, const std::string& context) override;
  void listen(Listener listener) override;

 private:
  DesktopHelper& helper_;
  const Users& users_;
};

// Signals on the session bus.
class LinuxAnnouncements : public Announcements {
 public:
  // Both outlive it.
  LinuxAnnouncements(DesktopHelper& helper, const Users& users) : helper_(helper), users_(users) {}

  Status announce(const std::string& name) override;

 private:
  DesktopHelper& helper_;
  const Users& users_;
};

}  // namespace vantory
