// Files in the hands of the user's other programs, through the desktop helper program.
#pragma once

#include "platform/Documents.h"

namespace vantory {

class DesktopHelper;

// The file manager is org.freedesktop.FileManager1, the mail program that of "xdg-email".
class LinuxDocuments : public Documents {
 public:
  // The helper outlives it.
  explicit LinuxDocuments(DesktopHelper& helper) : helper_(helper) {}

  Status open(const std::string& pathOrAddress) override;
  Status reveal(const std::vector<std::string>& paths) override;
  Status mail(const std::string& path) override;

 private:
  Status ask(const std::vector<std::string>& request);

  DesktopHelper& helper_;
};

}  // namespace vantory
