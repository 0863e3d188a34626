// Looks at the shape of the home's path.
#include "tasks/HomeCheck.h"

#include "backups/QWDataController.h"
#include "base/Format.h"
#include "base/Paths.h"
#include "base/Text.h"
#include "platform/Users.h"
#include "services/Runtime.h"
#include "services/files/QWFileManager.h"

namespace vantory {

// A star would have the home or the library taken for a pattern of other folders.
std::optional<std::string> reasonToRefuse(const std::optional<std::string>& home, bool usesBackups) {
  if (!home && Runtime::current().platform().users.isSuperuser())
    return "Nobody is logged in at the console - nothing was done.";
  if (!home) return "There is no home folder - nothing was done.";
  if (QWFileManager::isWildcardPath(*home))
    return formatted("The home folder %@ has a * in its name - nothing was done.", *home);
  if (!usesBackups) return std::nullopt;
  const auto library = QWDataController::vantoryBackupLocation();
  if (library && QWFileManager::isWildcardPath(*library))
    return formatted("The backup folder %@ has a * in its name - nothing was done.", *library);
  return std::nullopt;
}

// "/Users/anna" has three components. Backups drop as many, whatever they are, to make a path fit every user's home.
std::string remarkOnHome(const std::string& home) {
  if (paths::components(home).size() == 3 || Runtime::current().isHomeNamed) return {};
  return formatted(
      "The home folder %@ is not two levels deep: a restore puts files of the home elsewhere than they came from, in "
      "this home too. With --home \"$HOME\" before the task, also when it is restored, a backup fits any home.",
      printable(home));
}

// Otherwise what is not found would be taken for what is not there.
std::string remarkOnMissingHome(const std::string& home) {
  return QWFileManager::isDirectoryAtPath(home) ? ""
                                                : formatted("There is no folder %@, which is to be the home.", home);
}

// Left to themselves, scripts would take the silence for work in the home that they name.
std::string remarkOnOtherHome(const std::string& home) {
  const auto named = Runtime::current().platform().users.disregardedHome();
  if (!named) return {};
  if (!QWFileManager::isDirectoryAtPath(*named))
    return formatted("This works in %@, although HOME is %@, where there is no folder.", home, *named);
  return formatted(
      "This works in %@, although HOME is %@: the superuser's HOME counts only where it is root's own. To "
      "work in that home put --home \"%@\" before the task.",
      home, *named, *named);
}

}  // namespace vantory
