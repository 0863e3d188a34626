// What a backup is called, and may be.
#pragma once

#include <string>

#include "services/messages/QWAlert.h"

namespace vantory {

class QWBackup;

// Whether it is a name of automatic backups. A manual backup of such a name would be listed with them, and deleted in
// time; the person is told so on that window. Blocks until the person has answered.
bool refuseNameOfAutomaticBackups(const std::string& name, AlertParent parentWindow);

// What happens to some names, in a sentence.
inline constexpr const char* kLeftOutOfNames =
    "A slash, a colon and a dot at the beginning cannot be part of a backup's name.";
inline constexpr const char* kNameIsTaken = "Another backup has that name already.";
// "\"a/b:c\" is kept as \"abc\".".
std::string keptNameInWords(const std::string& wanted, const std::string& kept);

// "Clean setup" of 2026-11-14 21:35:17, by which a question tells a backup from another of that name; without the date
// where there is none.
std::string nameAndDate(const QWBackup& backup);

// What it holds that nothing here defines, in a sentence that begins with "It"; there must be some.
std::string unknownInWords(const QWBackup& backup);

// What else to know before it is restored, in a paragraph of its own; empty where all of it can be.
std::string warningOf(const QWBackup& backup);

}  // namespace vantory
