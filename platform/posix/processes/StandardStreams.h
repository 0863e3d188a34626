// The standard streams of a process that may have been started without some.
#pragma once

namespace vantory {

// A file opened later must not become one of the standard streams. Those that are closed are opened the wrong way
// round, so that whoever writes to one is told.
void fillStandardStreams();

}  // namespace vantory
