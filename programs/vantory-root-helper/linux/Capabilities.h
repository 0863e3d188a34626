// What the superuser's rights are reduced to.
#pragma once

namespace vantory {

// Leaves this thread, and those it starts, only the capabilities that work on files takes, of those it has: none to
// look into other processes, to load modules or to change the network or what is mounted. False when that failed.
bool keepOnlyFileCapabilities();

}  // namespace vantory
