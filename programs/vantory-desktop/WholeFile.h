// Files that are replaced whole or not at all.
#pragma once

#include <string>
#include <string_view>

#include "base/Result.h"

namespace vantory::desktop {

// Writes the file anew, on disk before this returns. A file that is a link stays one: what it points to is replaced.
// The mode of a file that was there is kept, else it is `mode`. One that may not be written is left alone.
Status writeWhole(const std::string& path, std::string_view bytes, int mode);

}  // namespace vantory::desktop
