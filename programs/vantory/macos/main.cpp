// The program's entry on macOS.

#include <unistd.h>

#include <iostream>

#include "platform/macos/MacPlatform.h"
#include "programs/vantory/Start.h"
#include "tasks/Refusal.h"
#include "tasks/homes/HomeOptions.h"

int main(int argumentCount, char** arguments) {
  // The superuser's process would have to become the user at the screen first, which it cannot do yet.
  if (getuid() == 0 || geteuid() == 0) {
    std::cerr << "Vantory: On macOS the superuser cannot run this yet. Please run it without \"sudo\", as the user "
                 "whose files it is to handle. Nothing was done.\n";
    return 1;
  }
  vantory::HomeOptions options = vantory::readHomeOptions({arguments, arguments + argumentCount});
  if (!options.fault && (options.home || options.isForMany()))
    options.fault = "Other homes than the user's own cannot be named on macOS yet - nothing was done.";
  if (options.fault) return vantory::refuseLine(*options.fault, options.arguments, std::cout, std::cerr);
  vantory::MacPlatform platform(options.arguments, vantory::MacPlatform::Progress::Shown);
  return vantory::start(platform.platform(), platform.progressLine());
}
