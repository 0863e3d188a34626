// The tools of a Linux system.
#pragma once

#include "platform/SystemTools.h"

namespace vantory {

class LinuxSystemTools : public SystemTools {
 public:
  // By bsdtar. Names that are no UTF-8 get replacement characters, special files are left out; it says so.
  ToolCall zip(const std::string& item, const std::string& archive) const override;
  // An application is known by its desktop entry: the index of the folder that holds the entry is brought up to date.
  std::optional<ToolCall> registerApplication(const std::string& application) const override;
  std::optional<ToolCall> refreshView(const std::string&) const override { return std::nullopt; }
};

}  // namespace vantory
