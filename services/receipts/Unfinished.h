// What a task that was killed was putting together.
#pragma once

#include <string>
#include <vector>

namespace vantory {

struct Receipt;

// Removes what lies unfinished and hidden beside the places where the task was to put something, as far as they are
// below one of these folders. Whoever is at work there holds it, so that it stays.
void removeUnfinished(const Receipt& receipt, const std::vector<std::string>& roots);

// The same of the newest receipt, where its task was killed, in the home and the folders that all users share.
void removeUnfinishedOfNewest();

}  // namespace vantory
