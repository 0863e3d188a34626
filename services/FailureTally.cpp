#include "services/FailureTally.h"

#include "services/Runtime.h"

namespace vantory {

FailureTally& FailureTally::shared() {
  return Runtime::current().shared<FailureTally>();
}

}  // namespace vantory
