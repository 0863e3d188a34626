// Settings as the text of a property list in its XML form.
#pragma once

#include <string>
#include <string_view>

#include "base/Result.h"

namespace vantory {

// These settings with one number set; everything else in them stays. No bytes stand for settings that do not exist yet.
// Settings that are damaged or in another form are an error (invalid_argument) about `path`.
Result<std::string> withSetting(std::string_view settings, const std::string& key, int value, const std::string& path);

}  // namespace vantory
