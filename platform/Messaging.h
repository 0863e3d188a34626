// The two ways a task speaks to the desktop: to the tool that started it, and to the person.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "platform/Result.h"

namespace vantory {

// The service that a companion tool registers to hear of a task it started.
//
// Services are named without a domain ("QWProClientCallback"), messages with their colons ("postError:forApp:"). Each
// platform makes its own names of them; on D-Bus the service gets the maker's domain in front and the member loses its
// colons, and no two members share a name. Every argument is a text; the second one of "postErrorString:userInfo:" is
// the value of "appName" in the dictionary that travels.
class TaskClient {
 public:
  virtual ~TaskClient() = default;

  // A connection attempt to the named service; false when nobody has registered it.
  virtual bool connect(const std::string& service) = 0;
  // True when the connected client understands the message.
  virtual bool understands(const std::string& message) = 0;
  virtual Status send(const std::string& message, const std::vector<std::string>& arguments) = 0;
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

}  // namespace vantory
