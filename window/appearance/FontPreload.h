// The list of fonts, read before the toolkit asks for it.
#pragma once

namespace vantory {

// Reading the list takes as long as everything else before the first paint: on a thread of its own it costs no time.
// The toolkit finds it there when the call has returned before the first text is laid out.
void preloadFonts();

}  // namespace vantory
