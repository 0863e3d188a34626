// Asks for the process's mask once.
#include "platform/posix/files/UntrustedMode.h"

#include <sys/stat.h>

namespace vantory {

namespace {

// It can be read only by setting it: to one that lets nobody else in.
mode_t processMask() {
  static const mode_t mask = [] {
    const mode_t found = umask(S_IRWXG | S_IRWXO);
    umask(found);
    return found;
  }();
  return mask;
}

}  // namespace

void learnProcessMask() {
  (void)processMask();
}

mode_t untrustedMode(mode_t original) {
  const mode_t possible = S_ISDIR(original) ? 0777U : 0666U;
  return original & possible & ~processMask() & ~static_cast<mode_t>(S_IWOTH);
}

}  // namespace vantory
