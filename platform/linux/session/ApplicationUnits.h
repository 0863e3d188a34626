// The service manager's units that desktops start applications in, by their names.
#pragma once

#include <string>
#include <string_view>

namespace vantory {

// The unit that a process belongs to, such as "app-gnome-org.example.Editor-4711.scope", from the text of its
// /proc/PID/cgroup; empty when it tells of none.
std::string unitOfProcess(std::string_view controlGroups);

// Whether the unit was made for the application with that desktop-entry id (without ".desktop"): a scope
// "app[-LAUNCHER]-ID-RANDOM.scope" or a service "app[-LAUNCHER]-ID[@RANDOM].service".
bool isUnitOfApplication(std::string_view unit, std::string_view identifier);

// Whether the unit was made for an application of a snap, named "INSTANCE.APP".
bool isUnitOfSnap(std::string_view unit, std::string_view snapApplication);

}  // namespace vantory
