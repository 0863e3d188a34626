// vantory-lock-helper: locks and unlocks its caller's own files. It has the one capability for that, which its caller
// has not. Its standard input is the conversation with Vantory.

#include <sys/socket.h>
#include <unistd.h>

#include <cstdio>

#include "platform/linux/helpers/Channel.h"
#include "programs/vantory-lock-helper/Confinement.h"
#include "programs/vantory-lock-helper/LockService.h"

namespace vantory {

namespace {

enum ExitCode { kEnded = 0, kWrongCall = 64, kWrongRights = 77 };

int socketOption(int option) {
  int value = 0;
  socklen_t size = sizeof value;
  return getsockopt(STDIN_FILENO, SOL_SOCKET, option, &value, &size) == 0 ? value : -1;
}

// Whoever starts the helper by hand has no such socket to give it.
bool isConversation() {
  return socketOption(SO_DOMAIN) == AF_UNIX && socketOption(SO_TYPE) == SOCK_SEQPACKET;
}

// Who talks nonsense is not talked to any more.
ExitCode serve(Channel channel) {
  for (;;) {
    const Result<Message> request = channel.receive();
    if (!request) return request.error().code == std::errc::not_connected ? kEnded : kWrongCall;
    const auto answer = serveLockRequest(*request);
    if (!answer) return kWrongCall;
    if (!channel.send(*answer)) return kEnded;
  }
}

ExitCode run(int argumentCount) {
  if (const Status confined = confine(); !confined) {
    std::fprintf(stderr, "%s\n", confined.error().text.c_str());
    return kWrongRights;
  }
  if (argumentCount != 1 || !isConversation()) {
    std::fputs("vantory-lock-helper is started by Vantory and takes no arguments\n", stderr);
    return kWrongCall;
  }
  return serve(Channel(Descriptor(STDIN_FILENO)));
}

}  // namespace

}  // namespace vantory

// NOLINTNEXTLINE(bugprone-exception-escape): one that escaped ends the helper, which is then started anew
int main(int argc, char**) {
  return vantory::run(argc);
}
