// Permissions of copies whose originals nobody vouches for.
#pragma once

#include <sys/types.h>

namespace vantory {

// Of the original's permissions those that a new file or folder of the process would get, but none to execute a file
// and none for everybody to write. Any thread.
mode_t untrustedMode(mode_t original);
// Asks for the mask that it goes by. To be called before there are other threads: the mask is another for a moment.
void learnProcessMask();

}  // namespace vantory
