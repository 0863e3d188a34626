// The built-in table of applications and their preference items.
#pragma once

#include <vector>

namespace vantory {

// The user's folder that a pattern lies below.
enum class Base { Preferences, ApplicationSupport, Documents };

// A file or folder of an item: a pattern in which "*" stands for any run of characters within a component.
struct BuiltInFile {
  Base base;
  const char* pattern;
};

struct BuiltInItem {
  const char* name;
  const char* key;  // unique in the table
  std::vector<BuiltInFile> files;
  bool lockable = true;
  bool hasAvidUsers = false;
};

struct BuiltInApp {
  const char* name;
  const char* icon;  // resource name
  const char* bundleID;
  std::vector<BuiltInItem> items;
};

// In the order in which everything is shown.
const std::vector<BuiltInApp>& builtInCatalog();

}  // namespace vantory
