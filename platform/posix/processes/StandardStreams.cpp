#include "platform/posix/processes/StandardStreams.h"

#include <fcntl.h>
#include <unistd.h>

#include <initializer_list>

namespace vantory {

void fillStandardStreams() {
  for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO})
    if (fcntl(stream, F_GETFD) < 0) (void)open("/dev/null", stream == STDIN_FILENO ? O_WRONLY : O_RDONLY);
}

}  // namespace vantory
