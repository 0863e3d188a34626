// What the desktop of a Mac does for the user.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "platform/DefaultHandlers.h"
#include "platform/Documents.h"
#include "platform/FileSystem.h"
#include "platform/Messaging.h"
#include "platform/Users.h"
#include "platform/Workspace.h"
#include "platform/macos/session/PreferencesDaemon.h"

namespace vantory {

// Whether an application runs is told without the desktop; the rest goes through its tools.
class MacWorkspace : public Workspace {
 public:
  // They outlive it.
  MacWorkspace(const FileSystem& files, const Users& users, PreferencesDaemon& daemon)
      : files_(files), users_(users), daemon_(daemon) {}

  Result<bool> isRunning(const std::string& bundleIdentifier) const override;
  Result<bool> canBeAskedToQuit(const std::string& bundleIdentifier) const override;
  Status quitApplication(const std::string& name, const std::string& bundleIdentifier) override;
  std::optional<std::string> applicationPath(const std::string& bundleIdentifier) const override;
  Status launchApplication(const std::string& bundleIdentifier) override;
  Status openFile(const std::string& path, const std::string& bundleIdentifier) override;
  Status activateApplication(const std::string& bundleIdentifier) override;
  Status runScript(const std::string& script) override;

 private:
  // The processes of the user's that are copies of it.
  Result<std::vector<std::string>> copiesOf(const std::string& bundleIdentifier) const;

  const FileSystem& files_;
  const Users& users_;
  PreferencesDaemon& daemon_;
};

class MacDocuments : public Documents {
 public:
  Status open(const std::string& pathOrAddress) override;
  Status reveal(const std::vector<std::string>& paths) override;
  Status mail(const std::string& path) override;
};

// Types are known by the applications that declare them; none is declared here.
class MacDefaultHandlers : public DefaultHandlers {
 public:
  Result<std::string> typeOfExtension(const std::string& extension) const override;
  // Only an application that is installed.
  Status setDefaultViewer(const std::string& type, const std::string& bundleIdentifier) override;
  std::optional<std::string> defaultViewer(const std::string& type) const override;
};

// A service is a message port of the session.
class MacTaskClient : public TaskClient {
 public:
  Result<Answer> send(const std::string& service, const TaskMessage& message) override;
};

// They bear the name of the system's script editor, and nothing comes back of a click.
class MacDesktopNotifications : public DesktopNotifications {
 public:
  Status post(const std::string& title, const std::string& text, const std::string& context) override;
  void listen(Listener) override {}
};

// Distributed notifications of the session.
class MacAnnouncements : public Announcements {
 public:
  Status announce(const std::string& name) override;
};

}  // namespace vantory
