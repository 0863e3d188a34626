// The commands by which the system's own tools do what the program has no code for.
#pragma once

#include <optional>
#include <string>
#include <vector>

namespace vantory {

struct ToolCall {
  std::string tool;  // an absolute path
  std::vector<std::string> arguments;
};

class SystemTools {
 public:
  virtual ~SystemTools() = default;

  // Packs an item into a new zip archive, under its own name as the top entry.
  virtual ToolCall zip(const std::string& item, const std::string& archive) const = 0;
  // Makes an application known to the desktop, or what it can do known anew. None for what the desktop does not know
  // applications by.
  virtual std::optional<ToolCall> registerApplication(const std::string& application) const = 0;
  // Has the file manager look at an item anew. None where it sees changes by itself.
  virtual std::optional<ToolCall> refreshView(const std::string& item) const = 0;
};

}  // namespace vantory
