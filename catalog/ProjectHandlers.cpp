#include "catalog/ProjectHandlers.h"

#include <algorithm>
#include <array>
#include <string>

#include "base/Text.h"
#include "platform/DefaultHandlers.h"
#include "services/Runtime.h"
#include "services/log/QWLog.h"
#include "services/settings/QWUserDefaults.h"

namespace vantory {

namespace {

struct ProjectKind {
  const char* extension;
  const char* handler;
};

constexpr std::array<ProjectKind, 8> kProjectKinds = {{{"fcp", "com.apple.finalcutpro"},
                                                       {"stap", "com.apple.soundtrackpro"},
                                                       {"stmp", "com.apple.soundtrackpro"},
                                                       {"motn", "com.apple.motion"},
                                                       {"ipr", "com.apple.livetype"},
                                                       {"dspproj", "com.apple.dvdstudiopro"},
                                                       {"compressor", "com.apple.compressor.compressor"},
                                                       {"colorproj", "com.apple.color"}}};

DefaultHandlers& handlers() {
  return Runtime::current().platform().defaultHandlers;
}

std::string ownIdentifier() {
  return lowerCased(QWUserDefaults::kDomain);
}

void setHandler(const std::string& extension, const std::string& identifier) {
  const Result<std::string> type = handlers().typeOfExtension(extension);
  if (type) (void)handlers().setDefaultViewer(*type, identifier);
}

bool isOwn(const std::string& extension) {
  const Result<std::string> type = handlers().typeOfExtension(extension);
  return type && handlers().defaultViewer(*type) == ownIdentifier();
}

}  // namespace

bool ProjectHandlers::setFCSDefaultFileExtensions() {
  QWLog::appendLog("Setting Final Cut Studio as default project handler...");
  for (const auto& [extension, handler] : kProjectKinds) setHandler(extension, handler);
  QWLog::appendLog("Project handling setup complete");
  return true;
}

bool ProjectHandlers::setVantoryDefaultFileExtensions() {
  QWLog::appendLog("Setting Vantory as default project handler...");
  for (const ProjectKind& kind : kProjectKinds) setHandler(kind.extension, ownIdentifier());
  QWLog::appendLog("Project handling setup complete");
  return true;
}

bool ProjectHandlers::checkVantoryDefaultForFileExtensions() {
  constexpr std::array kOrder = {"fcp", "stmp", "stap", "motn", "ipr", "dspproj", "compressor", "colorproj"};
  return std::all_of(kOrder.begin(), kOrder.end(), isOwn);
}

bool ProjectHandlers::updateHandlingStatus() {
  QWLog::appendLog("Updating preference handling information...");
  const bool isVantory = checkVantoryDefaultForFileExtensions();
  QWLog::appendLog("%@ is the default project handler", isVantory ? "Vantory" : "Final Cut Studio");
  return isVantory;
}

}  // namespace vantory
