// Has Fontconfig read its lists.
#include "window/appearance/FontPreload.h"

#include <fontconfig/fontconfig.h>

namespace vantory {

void preloadFonts() {
  FcInit();
}

}  // namespace vantory
