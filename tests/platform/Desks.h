// A person's desktop on each platform, with applications and programs that are not ours, for the tests of what every
// platform's desktop does.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "platform/DefaultHandlers.h"
#include "platform/Documents.h"
#include "platform/Messaging.h"
#include "platform/Workspace.h"
#include "tests/platform/Systems.h"

namespace vantory::test {

class Desk {
 public:
  enum class Manners { QuitsWhenAsked, CannotBeAsked };
  enum class Listener { TaskClient, Notifications, Announcements };

  virtual ~Desk() = default;

  // The platform's own.
  virtual Workspace& workspace() = 0;
  virtual Documents& documents() = 0;
  virtual DefaultHandlers& handlers() = 0;
  virtual TaskClient& client() = 0;
  virtual DesktopNotifications& notifications() = 0;
  virtual Announcements& announcements() = 0;

  // An application that opens projects of Final Cut Pro, addresses and mail.
  virtual void install(const std::string& identifier) = 0;
  // A copy of it that runs from then on.
  virtual void start(const std::string& identifier, Manners manners) = 0;
  // What was opened last with any of them.
  virtual std::string opened() = 0;
  // One that is there from then on; a task client knows that one message.
  virtual void attach(Listener listener, const std::string& service = "", const std::string& message = "") = 0;
  // What that heard next.
  virtual std::vector<std::string> heard() = 0;
};

// Why this machine cannot have one; empty when it can.
std::string missingForDesk(System system);
std::unique_ptr<Desk> makeDesk(System system);

}  // namespace vantory::test
