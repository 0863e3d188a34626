// What a preference item needs of the record that holds it.
#pragma once

#include "catalog/States.h"

namespace vantory {

class CatalogParent {
 public:
  virtual ~CatalogParent() = default;
  virtual State selected() const = 0;
  virtual void updateLockStatus(bool refreshChildren) = 0;
};

}  // namespace vantory
