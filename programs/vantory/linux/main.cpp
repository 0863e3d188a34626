// The program's one entry on Linux, for tasks and for the window.

#include "platform/linux/LinuxPlatform.h"
#include "programs/vantory/Start.h"

int main(int argumentCount, char** arguments) {
  using namespace vantory;
  return start(readHomeOptions({arguments, arguments + argumentCount}), [](const std::vector<std::string>& all,
                                                                           bool showsProgress, const PlatformUse& use) {
    LinuxPlatform platform(all, "", showsProgress ? LinuxPlatform::Progress::Shown : LinuxPlatform::Progress::Hidden);
    use(platform.platform(), platform.progressLine());
  });
}
