// The xxHash library's own function, compiled for processors with AVX2. Nothing else belongs here: what other sources
// share with this one would be compiled for those processors too.
#ifdef VANTORY_AVX2

#define XXH_INLINE_ALL
#include "base/ChecksumAvx2.h"

#include <xxhash.h>

namespace vantory {

void addByAvx2(void* state, const void* bytes, std::size_t count) {
  XXH3_128bits_update(static_cast<XXH3_state_t*>(state), bytes, count);
}

}  // namespace vantory

#endif
