// Which application opens the project files of the editing applications: they themselves, or this program, which
// restores a project's settings first.
#pragma once

namespace vantory {

// What the platform refuses is passed over; checkVantoryDefaultForFileExtensions() tells what came of it. Any thread.
class ProjectHandlers {
 public:
  // Makes the editing applications the default viewers of their projects. Always true.
  static bool setFCSDefaultFileExtensions();
  // Makes this program the default viewer of all projects. Always true.
  static bool setVantoryDefaultFileExtensions();
  // True when this program is the default viewer of all projects.
  static bool checkVantoryDefaultForFileExtensions();
  // True when no application that was chosen for any of the projects is installed.
  static bool isNoneInstalled();
  // Whether this program is it, told in the log: what is shown to the person after a change.
  static bool updateHandlingStatus();
};

}  // namespace vantory
