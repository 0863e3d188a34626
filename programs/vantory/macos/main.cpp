// The program's entry on macOS.

#include <unistd.h>

#include <utility>

#include "platform/macos/MacPlatform.h"
#include "programs/vantory/Start.h"
#include "tasks/Program.h"

int main(int argumentCount, char** arguments) {
  using namespace vantory;
  MacIdentity identity = ownIdentity();
  HomeOptions options = readHomeOptions({arguments, arguments + argumentCount});
  const bool isForNobody = options.fault || asksAboutProgram(options.arguments);
  if (getuid() == 0 && !options.home && !options.isForMany() && !isForNobody) {
    auto become = becomeConsoleUser();
    if (become)
      identity = std::move(*become);
    else
      options.fault = become.error().text;
  }
  return start(std::move(options), [&](const std::vector<std::string>& all, bool showsProgress,
                                       const PlatformUse& use) {
    MacPlatform platform(all, showsProgress ? MacPlatform::Progress::Shown : MacPlatform::Progress::Hidden, identity);
    use(platform.platform(), platform.progressLine());
  });
}
