// Failures, as the person at the window and the log are told of them.
#pragma once

#include <cstddef>
#include <string>

#include "services/messages/QWAlert.h"

namespace vantory {

// Logs what failed and shows it as an alert; blocks until that is answered. Any thread.
void reportFailure(const std::string& failure, const std::string& reason,
                   AlertParent parentWindow = AlertParent::MainWindow);

// Tells in the same way of files that could not be restored since the tally of failures stood there.
void reportIncompleteRestore(std::size_t failuresBefore);

}  // namespace vantory
