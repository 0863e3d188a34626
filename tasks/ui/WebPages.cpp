// Puts addresses together.
#include "tasks/ui/WebPages.h"

#include <string_view>

namespace vantory::pages {

namespace {

constexpr const char* kBugReport = "https://www.quarrywell.com/support/bug/";
constexpr const char* kFeatureRequest = "https://www.quarrywell.com/support/feature/";
constexpr const char* kName = "vantory";

// As the value of a query key.
std::string encoded(std::string_view text) {
  constexpr std::string_view kDigits = "0123456789ABCDEF";
  constexpr std::string_view kPlain = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789-._~";
  std::string result;
  for (const char c : text) {
    const auto byte = static_cast<unsigned char>(c);
    if (kPlain.find(c) != std::string_view::npos)
      result.push_back(c);
    else
      result.append({'%', kDigits[byte >> 4], kDigits[byte & 15]});
  }
  return result;
}

}  // namespace

std::string bugReport(const std::string& version) {
  return std::string(kBugReport) + "?app=" + encoded(kName) + "&version=" + encoded(version);
}

std::string featureRequest() {
  return std::string(kFeatureRequest) + "?app=" + encoded(kName);
}

}  // namespace vantory::pages
