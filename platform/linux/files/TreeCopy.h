// Copying the content of a folder into a new one.
#pragma once

#include <sys/stat.h>

#include <string>

#include "base/Result.h"
#include "platform/posix/files/Descriptor.h"

namespace vantory {

class CopyReport;
struct CopyManner;

// Copies all that an open folder holds into an open, new and empty one, and then its attributes. Links stay links;
// FIFOs, sockets and devices are left out with a note, as is what vanishes meanwhile. Stops at the first file that
// cannot be copied; what was copied until then stays for the caller to remove.
Status copyTree(Descriptor source, Descriptor copy, const std::string& path, const std::string& destination,
                const CopyManner& manner, CopyReport& report);

}  // namespace vantory
