// What the desktop helper program does for the program that started it.
#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <vector>

#include "base/Result.h"
#include "platform/linux/helpers/Channel.h"

namespace vantory::desktop {

// A request names a verb; what follows are its arguments. The work answers with the values of the reply, on the main
// thread, one request after the other. It may block for as long as the one who asks is willing to wait.
struct Verb {
  std::string name;
  std::size_t arguments;  // at least so many
  std::function<Result<Message>(const Message& arguments)> work;
};

using Verbs = std::vector<Verb>;

// Tells the program that started this one of something that happened: a name, then values. Any thread.
using EventSink = std::function<void(Message event)>;

// One table for each service.
Verbs notificationVerbs(EventSink tell);
Verbs taskClientVerbs();
Verbs announcementVerbs();
Verbs runningApplicationVerbs();
Verbs launchVerbs();
Verbs documentVerbs();
Verbs defaultViewerVerbs();

}  // namespace vantory::desktop
