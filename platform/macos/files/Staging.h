// Work under a hidden name, put in place in one step.
#pragma once

#include <memory>
#include <string>

#include "platform/FileSystem.h"
#include "platform/macos/darwin/Darwin.h"
#include "platform/macos/files/Copying.h"
#include "platform/macos/files/Items.h"

namespace vantory::macos {

// A new private file or folder under a hidden name, held against other processes while it is worked on; what a killed
// process left under such a name is cleared. Destroying it before name() removes it.
class HiddenItem {
 public:
  enum class Kind { File, Folder };

  static Result<HiddenItem> create(Place place, const std::string& path, Kind kind, const Rights& rights);
  ~HiddenItem() { discard(); }
  HiddenItem(HiddenItem&&) noexcept = default;
  HiddenItem& operator=(HiddenItem&&) = delete;

  int get() const { return item_.get(); }
  // Puts a clone of a file in the item's place. False where the volume cannot do that.
  Result<bool> becomeCloneOf(int source, const darwin::ItemStatus& status, const std::string& path, CopyReport& report);
  // Gives it the name that it was made for.
  Status name(StagedCopy::Existing existing);
  void discard();

 private:
  HiddenItem(Place place, std::string hidden, Descriptor item, Kind kind, std::string path)
      : place_(std::move(place)),
        hidden_(std::move(hidden)),
        item_(std::move(item)),
        kind_(kind),
        path_(std::move(path)) {}

  Status replace();

  Place place_;  // the folder, and the final name
  std::string hidden_;
  Descriptor item_;
  Kind kind_;
  std::string path_;
};

// Copies an open file or folder beside the request's destination, which lies in that place.
Result<std::unique_ptr<StagedCopy>> stage(const Descriptor& source, const darwin::ItemStatus& status,
                                          const CopyRequest& request, Place destination, CopyReport& report);

}  // namespace vantory::macos
