// An application as a catalog file defines it.
#pragma once

#include <string>
#include <vector>

namespace vantory {

// Checked by whoever made it; never changes then.
struct AppDefinition {
  struct Item {
    std::string key;   // unique in the catalog
    std::string name;  // unique in the application
    bool lockable = true;
    std::vector<std::string> files;  // patterns as they are written: "~/..." or below the shared folder
    std::string secrets = {};        // what they may hold that others should not read, such as "stream keys"; or empty
  };

  std::string name;                      // unique in the catalog
  std::vector<std::string> identifiers;  // bundle identifiers or desktop entries, at least one
  std::string icon;                      // of the desktop's icon theme
  std::vector<std::string> projects;     // extensions of its project files, in small letters, without the dot
  std::vector<Item> items;               // at least one
  std::string source = {};               // the file that it stands in; empty for one that a backup carries
};

}  // namespace vantory
