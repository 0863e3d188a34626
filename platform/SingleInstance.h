// The copies of the windowed program that a person starts find the one that shows its window.
#pragma once

#include <functional>
#include <string>
#include <vector>

namespace vantory {

// What a start of the program asks for.
struct OpenRequest {
  std::vector<std::string> files = {};  // full paths; none when only the window is wanted
  std::string activationToken = {};     // by which the desktop lets a window come to the front; may be empty
};

// One window for each user, home and display.
class SingleInstance {
 public:
  // Called on a thread of its own.
  using Receiver = std::function<void(OpenRequest)>;
  // Nobody: no other copy listens, or it is just ending. Refused: whoever listens is not to be trusted, or silent.
  enum class HandOver { Taken, Nobody, Refused };

  virtual ~SingleInstance() = default;

  // Hears from now on what other copies hand over. False when another copy listens, or nothing can.
  virtual bool listen(Receiver receive) = 0;
  // When this returns the receiver is called no more, and the next copy may listen.
  virtual void stopListening() = 0;
  // Gives the request to the copy that listens. Returns within a few seconds; unless it is taken it is never acted on.
  virtual HandOver handOver(const OpenRequest& request) = 0;
};

}  // namespace vantory
