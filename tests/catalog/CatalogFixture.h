// What the tests of the catalog, and of what builds on it, stand on.
#pragma once

#include <memory>
#include <utility>

#include "catalog/QWPrefItem.h"
#include "tests/services/ServicesTest.h"

namespace vantory::test {

class CatalogTest : public ServicesTest {
 protected:
  static std::shared_ptr<QWPrefItem> itemWith(std::vector<std::string> patterns, bool lockable = true) {
    return std::make_shared<QWPrefItem>("Layouts", "layouts", lockable, std::move(patterns));
  }
};

}  // namespace vantory::test
