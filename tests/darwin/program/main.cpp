// The program for macOS on emulated calls, for the tests of the commands; it runs for the superuser too.

#include "platform/macos/MacPlatform.h"
#include "programs/vantory/Start.h"

int main(int argumentCount, char** arguments) {
  vantory::MacPlatform platform({arguments, arguments + argumentCount}, vantory::MacPlatform::Progress::Shown);
  return vantory::start(platform.platform(), platform.progressLine());
}
