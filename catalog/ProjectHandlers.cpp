// Sets and reads the default applications of project files.
#include "catalog/ProjectHandlers.h"

#include <algorithm>
#include <optional>
#include <string>

#include "base/Text.h"
#include "catalog/ProjectKinds.h"
#include "platform/DefaultHandlers.h"
#include "services/Runtime.h"
#include "services/log/QWLog.h"
#include "services/settings/QWUserDefaults.h"

namespace vantory {

namespace {

DefaultHandlers& handlers() {
  return Runtime::current().platform().defaultHandlers;
}

std::string ownIdentifier() {
  return lowerCased(QWUserDefaults::kDomain);
}

// What is refused here shows when the handlers are read afterwards.
void setHandler(const ProjectKind& kind, const std::string& identifier) {
  const Result<std::string> type = handlers().typeOfExtension(std::string(kind.extension));
  if (type) (void)handlers().setDefaultViewer(*type, identifier);
}

// In small letters; none where no application opens such projects.
std::optional<std::string> handlerOf(const ProjectKind& kind) {
  const Result<std::string> type = handlers().typeOfExtension(std::string(kind.extension));
  return type ? handlers().defaultViewer(*type) : std::nullopt;
}

}  // namespace

bool ProjectHandlers::setFCSDefaultFileExtensions() {
  QWLog::appendLog("Setting Final Cut Studio as default project handler...");
  // Handlers are known by identifiers in small letters.
  for (const ProjectKind& kind : kProjectKinds) setHandler(kind, lowerCased(kind.application));
  QWLog::appendLog("Project handling setup complete");
  return true;
}

bool ProjectHandlers::setVantoryDefaultFileExtensions() {
  QWLog::appendLog("Setting Vantory as default project handler...");
  for (const ProjectKind& kind : kProjectKinds) setHandler(kind, ownIdentifier());
  QWLog::appendLog("Project handling setup complete");
  return true;
}

bool ProjectHandlers::checkVantoryDefaultForFileExtensions() {
  return std::ranges::all_of(kProjectKinds, [](const ProjectKind& kind) { return handlerOf(kind) == ownIdentifier(); });
}

bool ProjectHandlers::isNoneInstalled() {
  return std::ranges::none_of(kProjectKinds, [](const ProjectKind& kind) { return handlerOf(kind).has_value(); });
}

bool ProjectHandlers::updateHandlingStatus() {
  QWLog::appendLog("Updating preference handling information...");
  const bool isVantory = checkVantoryDefaultForFileExtensions();
  QWLog::appendLog("%@ is the default project handler", isVantory ? "Vantory" : "Final Cut Studio");
  return isVantory;
}

}  // namespace vantory
