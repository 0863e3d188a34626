// The desktop helper program: serves the requests that arrive on its standard input until the conversation ends.
//
//   request:  VERB ARGUMENT...
//   answer:   "ok" VALUE...  or  "error" NUMBER TEXT, one for each request, in order
//   event:    "event" NAME VALUE..., at any time

#include <fcntl.h>
#include <glib.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <memory>
#include <string>
#include <thread>
#include <utility>

#include "platform/posix/files/Descriptor.h"
#include "platform/posix/files/Errors.h"
#include "programs/vantory-desktop/Services.h"

namespace vantory::desktop {
namespace {

class Server {
 public:
  explicit Server(Descriptor conversation) : channel_(std::move(conversation)) {
    add(notificationVerbs(events()));
    add(taskClientVerbs());
    add(announcementVerbs());
    add(runningApplicationVerbs());
    add(launchVerbs());
    add(documentVerbs());
    add(defaultViewerVerbs());
  }

  // Requests are received on a thread of their own, so that the end of the conversation ends a program that hangs.
  void run() {
    std::thread(&Server::receive, this).detach();
    g_main_loop_run(g_main_loop_new(nullptr, FALSE));
  }

 private:
  struct Request {
    Server* server;
    Message message;
  };

  EventSink events() {
    return [this](Message event) {
      event.insert(event.begin(), "event");
      (void)channel_.send(event);
    };
  }

  void add(Verbs verbs) { std::move(verbs.begin(), verbs.end(), std::back_inserter(verbs_)); }

  // Each request waits for its turn in the main loop.
  [[noreturn]] void receive() {
    while (Result<Message> message = channel_.receive())
      g_idle_add_full(G_PRIORITY_DEFAULT, &Server::serve, new Request{this, std::move(*message)}, nullptr);
    _exit(0);
  }

  static gboolean serve(void* data) {
    const std::unique_ptr<Request> request(static_cast<Request*>(data));
    request->server->answer(request->message);
    return G_SOURCE_REMOVE;
  }

  // Values that cannot travel are answered by the reason.
  void answer(const Message& request) {
    Result<Message> values = outcome(request);
    if (values) {
      values->insert(values->begin(), "ok");
      const Status sent = channel_.send(*values);
      if (sent) return;
      values = sent.error();
    }
    (void)channel_.send({"error", std::to_string(static_cast<int>(values.error().code)), values.error().text});
  }

  Result<Message> outcome(const Message& request) const {
    const auto verb =
        std::find_if(verbs_.begin(), verbs_.end(), [&](const Verb& known) { return known.name == request.front(); });
    if (verb == verbs_.end()) return systemError(request.front(), EBADMSG);
    if (request.size() - 1 < verb->arguments) return systemError(request.front(), EINVAL);
    return verb->work(Message(request.begin() + 1, request.end()));
  }

  Channel channel_;
  Verbs verbs_;
};

// The conversation must not be handed down to programs that are started from here.
Descriptor takeStandardInput() {
  Descriptor conversation(fcntl(STDIN_FILENO, F_DUPFD_CLOEXEC, STDERR_FILENO + 1));
  const Descriptor nothing(open("/dev/null", O_RDONLY | O_CLOEXEC));
  dup2(nothing.get(), STDIN_FILENO);
  return conversation;
}

}  // namespace
}  // namespace vantory::desktop

int main() {
  setsid();  // keys pressed at the terminal are not for what is started from here
  std::signal(SIGPIPE, SIG_IGN);
  vantory::desktop::Server(vantory::desktop::takeStandardInput()).run();
}
