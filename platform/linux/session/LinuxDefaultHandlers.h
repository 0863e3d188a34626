// Default applications by the shared MIME database and the user's own list, through the desktop helper program.
#pragma once

#include <memory>
#include <mutex>

#include "platform/DefaultHandlers.h"

namespace vantory {

class DesktopHelper;
class Users;

// GIO notices a change of the list only after a while, so that a helper program that has changed it is not asked what
// it says: this one has a helper of its own and ends it then.
class LinuxDefaultHandlers : public DefaultHandlers {
 public:
  // `users` outlives it.
  explicit LinuxDefaultHandlers(const Users& users);
  ~LinuxDefaultHandlers() override;

  Result<std::string> typeOfExtension(const std::string& extension) const override;
  Status setDefaultViewer(const std::string& type, const std::string& bundleIdentifier) override;
  std::optional<std::string> defaultViewer(const std::string& type) const override;

 private:
  DesktopHelper& helper() const;
  DesktopHelper& helperThatSeesChanges() const;

  const Users& users_;
  mutable std::mutex mutex_;  // for all below
  mutable std::unique_ptr<DesktopHelper> helper_;
  mutable bool changed_ = false;  // by this helper
};

}  // namespace vantory
