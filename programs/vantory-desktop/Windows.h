// The windows of other programs on the X display, those that Xwayland shows among them.
#pragma once

#include <sys/types.h>

#include <cstdint>
#include <memory>
#include <vector>

namespace vantory::desktop {

struct Window {
  std::uint32_t number;
  pid_t process;  // whose it is, as the display server knows it
  bool isMain;    // no menu, panel or palette, and no dialog of another window
};

// Needs a window manager that keeps to the Extended Window Manager Hints; where there is none, and without a display,
// there are no windows. Windows of Wayland itself are not seen.
class Windows {
 public:
  Windows();
  ~Windows();

  // Those that the window manager looks after.
  std::vector<Window> list() const;
  // Has the window manager ask a window to close, as its close button would.
  void close(const Window& window);

 private:
  struct Display;
  std::unique_ptr<Display> display_;
};

}  // namespace vantory::desktop
