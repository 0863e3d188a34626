#include "platform/linux/session/LinuxDefaultHandlers.h"

#include <algorithm>
#include <chrono>

#include "platform/linux/helpers/DesktopHelper.h"
#include "platform/linux/session/DesktopSession.h"
#include "platform/posix/files/Errors.h"

namespace vantory {

namespace {

// Types may have to be declared first.
constexpr std::chrono::seconds kPatience{30};

std::string lowerCase(std::string text) {
  std::transform(text.begin(), text.end(), text.begin(),
                 [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; });
  return text;
}

}  // namespace

LinuxDefaultHandlers::LinuxDefaultHandlers(const Users& users) : users_(users) {}

LinuxDefaultHandlers::~LinuxDefaultHandlers() = default;

Result<std::string> LinuxDefaultHandlers::typeOfExtension(const std::string& extension) const {
  const std::lock_guard lock(mutex_);
  const Result<Message> type = helper().ask({"find-type", extension}, kPatience);
  if (!type) return type.error();
  if (type->empty()) return systemError(extension, EBADMSG);
  return type->front();
}

Status LinuxDefaultHandlers::setDefaultViewer(const std::string& type, const std::string& bundleIdentifier) {
  const std::lock_guard lock(mutex_);
  changed_ = true;
  const Result<Message> set = helper().ask({"set-default-viewer", type, bundleIdentifier}, kPatience);
  if (!set) return set.error();
  return {};
}

std::optional<std::string> LinuxDefaultHandlers::defaultViewer(const std::string& type) const {
  const std::lock_guard lock(mutex_);
  const Result<Message> viewer = helperThatSeesChanges().ask({"default-viewer", type}, kPatience);
  if (!viewer || viewer->empty()) return std::nullopt;
  return lowerCase(viewer->front());
}

DesktopHelper& LinuxDefaultHandlers::helper() const {
  if (!helper_) helper_ = std::make_unique<DesktopHelper>([this] { return desktopHelperProgram(users_); });
  return *helper_;
}

DesktopHelper& LinuxDefaultHandlers::helperThatSeesChanges() const {
  if (changed_) helper_.reset();
  changed_ = false;
  return helper();
}

}  // namespace vantory
