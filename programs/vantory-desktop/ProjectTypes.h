// The declaration of project files that the installation puts into the shared MIME database.
#pragma once

#include <string_view>

namespace vantory::desktop {

// resources/mime/com.quarrywell.Vantory.xml
extern const std::string_view kProjectTypes;

}  // namespace vantory::desktop
