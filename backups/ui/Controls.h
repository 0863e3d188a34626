// Small parts of a window, as controllers see them. Everything here belongs to the main thread.
#pragma once

#include <string>
#include <vector>

namespace vantory {

class Button {
 public:
  virtual ~Button() = default;
  virtual void setEnabled(bool enabled) = 0;
  virtual void setTitle(const std::string& title) = 0;
  // A sentence to know before it is pressed; empty for none.
  virtual void setRemark(const std::string& text) = 0;
};

// Turns while something is being done.
class BusyIndicator {
 public:
  virtual ~BusyIndicator() = default;
  virtual void startAnimation() = 0;
  virtual void stopAnimation() = 0;
};

// Asks the person for files. Answers absolute paths; none when the person cancelled. The path of a file whose name is
// no text may come out as one that does not exist.
class FileChooser {
 public:
  virtual ~FileChooser() = default;
  struct Request {
    std::vector<std::string> extensions = {};  // without dots; empty for all
    // Folders instead of files, whatever they are called. New ones may be made unless extensions are given.
    bool folders = false;
    bool several = false;
    std::string kind = "Files";  // what files of these extensions are called
    bool others = false;         // files of other extensions can be chosen too; whoever asks looks at what they are
  };
  virtual std::vector<std::string> choose(const Request& request) = 0;
};

}  // namespace vantory
