// The tools of a Mac.
#pragma once

#include "platform/SystemTools.h"

namespace vantory {

class MacSystemTools : public SystemTools {
 public:
  // By ditto, with all that belongs to the files.
  ToolCall zip(const std::string& item, const std::string& archive) const override;
  // An application is a bundle, known to the launch services.
  std::optional<ToolCall> registerApplication(const std::string& application) const override;
  // By an event to the Finder, which no answer is waited for.
  std::optional<ToolCall> refreshView(const std::string& item) const override;
};

}  // namespace vantory
