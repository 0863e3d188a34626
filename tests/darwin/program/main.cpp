// The program for macOS on emulated calls, for the tests of the commands; it runs for the superuser too.

#include "platform/macos/MacPlatform.h"
#include "programs/vantory/Start.h"

int main(int argumentCount, char** arguments) {
  using namespace vantory;
  return start(readHomeOptions({arguments, arguments + argumentCount}), [](const std::vector<std::string>& all,
                                                                           bool showsProgress, const PlatformUse& use) {
    MacPlatform platform(all, showsProgress ? MacPlatform::Progress::Shown : MacPlatform::Progress::Hidden);
    use(platform.platform(), platform.progressLine());
  });
}
