// The environment of the user's graphical session.
#pragma once

#include "base/Result.h"

namespace vantory::desktop {

// Takes over, once, what the user's service manager knows of the session (display, folders of applications, ...) and
// this process has not been told, because the superuser or a timer started it. To be called before GIO is asked about
// applications.
void adoptSessionEnvironment();

// Whether there is a bus to speak on. Looking for one without asking this may start one.
bool hasBus();

// Fails (timed_out) where there is a bus that hangs. To be called before GIO starts programs or looks at files of any
// kind: it speaks to the bus then, and waits without end.
Status checkBus();

}  // namespace vantory::desktop
