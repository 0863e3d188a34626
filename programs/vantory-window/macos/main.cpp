// The windowed program on macOS, which the other one becomes when it is given no task.

#include <unistd.h>

#include <array>
#include <climits>
#include <iostream>

#include "platform/Users.h"
#include "platform/macos/MacPlatform.h"
#include "platform/macos/session/MacSingleInstance.h"
#include "platform/posix/processes/PosixTerminationSignals.h"
#include "services/Runtime.h"
#include "services/threads/MainThread.h"
#include "window/application/WindowProgram.h"

// The system itself keeps reports of crashes.
int main(int argumentCount, char** arguments) {
  vantory::MacPlatform platform({arguments, arguments + argumentCount}, vantory::MacPlatform::Progress::Hidden,
                                vantory::ownIdentity(), "vantory");
  vantory::Runtime runtime(platform.platform());
  runtime.shared<vantory::MainThread>();
  const auto user = platform.platform().users.processUser();
  std::array<char, PATH_MAX> folder{};  // the user's own, for temporary files
  confstr(_CS_DARWIN_USER_TEMP_DIR, folder.data(), folder.size());
  vantory::MacSingleInstance instance(folder.data(), user ? user->home : "");
  vantory::PosixTerminationSignals termination;
  return vantory::runWindow(argumentCount, arguments, instance, termination, std::cerr);
}
