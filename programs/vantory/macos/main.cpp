// The program's entry on macOS.

#include <unistd.h>

#include <utility>

#include "platform/macos/MacPlatform.h"
#include "programs/vantory/Start.h"

int main(int argumentCount, char** arguments) {
  using namespace vantory;
  HomeOptions options = readHomeOptions({arguments, arguments + argumentCount});
  // What needs the superuser's rights beside a user's cannot be done yet; for a home that is named its owner does all.
  if (getuid() == 0 && !options.home && !options.isForMany() && !options.fault)
    options.fault =
        "On macOS the superuser names the home to work in: \"sudo vantory --home /Users/NAME\" before the "
        "task - nothing was done.";
  return start(std::move(options), [](const std::vector<std::string>& all, bool showsProgress, const PlatformUse& use) {
    MacPlatform platform(all, showsProgress ? MacPlatform::Progress::Shown : MacPlatform::Progress::Hidden);
    use(platform.platform(), platform.progressLine());
  });
}
