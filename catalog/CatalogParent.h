// What a preference item needs of the record that holds it.
#pragma once

#include "platform/OutlineView.h"

namespace vantory {

class CatalogParent : public OutlineItem {
 public:
  virtual int selected() const = 0;
  virtual void updateLockStatus(bool refreshChildren) = 0;
};

}  // namespace vantory
