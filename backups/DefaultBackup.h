// Which backup is the default, as a change that can be taken back.
#pragma once

#include <string>

#include "base/Result.h"

namespace vantory {

class TaskReport;

// The path of the default backup, also where it is missing: its name stays. The library's folder where none is named.
std::string placeOfDefault();
// Whether a backup that comes to this place would be the default only because that, which has gone, bore its name.
bool wouldInheritDefault(const std::string& place);
// Tells of one that did.
void noteInheritedDefault(const std::string& place, TaskReport& report);
// Tells why the backup that is named as the default cannot be restored: it is incomplete, cannot be read or has gone.
// Nothing where none is named. The library has been listed before.
void remarkOnNamedDefault(TaskReport& report);
// Makes the backup at the path the default, or none by the library's folder. A report's record gets both places.
Status setPlaceOfDefault(const std::string& place, TaskReport& report);

}  // namespace vantory
