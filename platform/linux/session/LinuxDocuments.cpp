#include "platform/linux/session/LinuxDocuments.h"

#include <chrono>

#include "platform/linux/helpers/DesktopHelper.h"

namespace vantory {

namespace {

// The helper program gives up before; this is for one that hangs.
constexpr std::chrono::seconds kPatience{30};

}  // namespace

Status LinuxDocuments::open(const std::string& pathOrAddress) {
  return ask({"open", pathOrAddress});
}

Status LinuxDocuments::reveal(const std::vector<std::string>& paths) {
  std::vector<std::string> request = {"reveal"};
  request.insert(request.end(), paths.begin(), paths.end());
  return ask(request);
}

Status LinuxDocuments::mail(const std::string& path) {
  return ask({"mail", path});
}

Status LinuxDocuments::ask(const std::vector<std::string>& request) {
  const Result<Message> answer = helper_.ask(request, kPatience);
  if (!answer) return answer.error();
  return {};
}

}  // namespace vantory
