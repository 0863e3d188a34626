// The sheet in which a backup is named and its projects are listed, as its controller sees it.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace vantory {

// Main thread.
class BackupDialogView {
 public:
  virtual ~BackupDialogView() = default;

  // Shows the sheet on the main window, with this title on its confirming button.
  virtual void show(const std::string& confirmTitle) = 0;
  virtual void close() = 0;
  virtual std::string name() const = 0;
  virtual void setName(const std::string& name) = 0;
  // A sentence below the name; empty for none.
  virtual void setRemark(const std::string& text) = 0;
  // What becomes of a name that cannot be kept as it is; empty where it is.
  virtual void setKeptName(const std::string& text) = 0;
  // What the backup will hold; empty while that is not known.
  virtual void setContents(const std::string& text) = 0;
  // Paths; what was selected is selected no more.
  virtual void setProjects(const std::vector<std::string>& projects) = 0;
  virtual std::vector<std::size_t> selectedProjects() const = 0;
  virtual void setProjectListShown(bool shown) = 0;
  // Tells that projects are not opened through this program, and offers to change that.
  virtual void setHandlingNoticeShown(bool shown) = 0;
};

}  // namespace vantory
