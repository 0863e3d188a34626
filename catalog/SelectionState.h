// The three states of a check box.
#pragma once

namespace vantory {

// On (every child on, or locked), off, or mixed. A state never computed reads as Off.
enum State : int { Off = 0, On = 1, Mixed = -1 };

}  // namespace vantory
