#include "services/QWAlert.h"

#include "services/Runtime.h"

namespace vantory {

QWAlert& QWAlert::sharedController() {
  return Runtime::current().shared<QWAlert>();
}

}  // namespace vantory
