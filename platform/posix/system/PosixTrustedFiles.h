// Reads files by descriptors whose owners were looked at.
#pragma once

#include "platform/TrustedFiles.h"

namespace vantory {

class PosixTrustedFiles : public TrustedFiles {
 public:
  Result<std::vector<TrustedFile>> read(const std::string& folder, std::string_view ending, Limits limits,
                                        TrustedOwners owners) const override;
};

}  // namespace vantory
