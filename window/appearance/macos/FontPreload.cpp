// The toolkit asks the system for each font, which has its list ready.
#include "window/appearance/FontPreload.h"

namespace vantory {

void preloadFonts() {}

}  // namespace vantory
