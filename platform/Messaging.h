// How the program speaks to the desktop: to the tool that started it, to the person, and to the maker's other programs.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "base/Result.h"

namespace vantory {

// Messages are named with their colons ("postError:forApp:"); every argument is a text.
struct TaskMessage {
  std::string name;
  std::vector<std::string> arguments = {};

  bool operator==(const TaskMessage&) const = default;
};

// A companion tool that registered a service in order to hear of a task it started. Any thread.
//
// Services are named without a domain ("QWProClientCallback"). Each platform makes its own names of them; on D-Bus the
// service gets the maker's domain in front, it is the object of the same name, the member loses its colons, and no two
// members share a name. The second argument of "postErrorString:userInfo:" is the value of "appName" in the dictionary
// that travels.
class TaskClient {
 public:
  enum class Answer { Received, NotUnderstood, NotRegistered };

  virtual ~TaskClient() = default;

  // Returns when the message was received. Fails when the service refuses it, dies, or does not answer within two
  // seconds or so. Nobody is started for it, and where nobody can have registered it costs nothing.
  virtual Result<Answer> send(const std::string& service, const TaskMessage& message) = 0;
};

// Messages that the desktop shows for a while. Any thread.
class DesktopNotifications {
 public:
  enum class Outcome { Clicked, TimedOut };
  // Called on a thread of the platform's, which it must not hold up, with the context of the message concerned.
  using Listener = std::function<void(Outcome, const std::string& context)>;

  virtual ~DesktopNotifications() = default;

  // Returns when the desktop has taken the message or, after two seconds or so, has not. `context` is any text.
  virtual Status post(const std::string& title, const std::string& text, const std::string& context) = 0;
  // Who hears from now on what becomes of the messages; null for nobody. When this returns no earlier listener runs.
  virtual void listen(Listener listener) = 0;
};

// Names that are called out to all programs of the session, whoever listens. Any thread.
class Announcements {
 public:
  virtual ~Announcements() = default;

  // Returns when the name is on its way; fails within two seconds or so where it cannot be.
  virtual Status announce(const std::string& name) = 0;
};

}  // namespace vantory
