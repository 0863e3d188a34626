// Copying open files and folders, with what belongs to them.
#pragma once

#include <string>
#include <utility>

#include "base/Result.h"
#include "platform/FileSystem.h"
#include "platform/macos/darwin/Darwin.h"
#include "platform/macos/files/Items.h"
#include "platform/posix/files/CopyReport.h"

namespace vantory::macos {

// How a copy is made, and what it tells.
class CopyReport : public vantory::CopyReport {
 public:
  CopyReport() = default;
  CopyReport(CopyObserver observer, CopyChecksum checksum, bool mayBeProgram, const Rights& rights, bool isInHome)
      : vantory::CopyReport(std::move(observer)),
        checksum_(checksum),
        mayBeProgram_(mayBeProgram),
        rights_(rights),
        isInHome_(isInHome) {}
  CopyReport(CopiedItems& items, const Rights& rights, bool isInHome)
      : vantory::CopyReport(items), rights_(rights), isInHome_(isInHome) {}

  // What comes of the checksums that files carry.
  CopyChecksum checksum() const { return checksum_; }
  // Whether all keep their permissions and access lists; otherwise untrustedMode() decides.
  bool mayBeProgram() const { return mayBeProgram_; }
  // With whose rights the copy is made, and whether in the home of the user whom the superuser works for.
  const Rights& rights() const { return rights_; }
  bool isInHome() const { return isInHome_; }
  // Whether a file may be cloned. A clone has its name before it is open: where others may write, the superuser makes
  // none.
  bool mayClone(const darwin::ItemStatus& file) const {
    return mayBeProgram_ && !rights_.isAdministrator() && (file.flags & darwin::kOnlyInCloud) == 0;
  }

 private:
  const CopyChecksum checksum_ = CopyChecksum::Keep;
  const bool mayBeProgram_ = true;
  const Rights rights_ = Rights::own();
  const bool isInHome_ = false;
};

// Opens a file or folder that is to be copied, without waiting for a FIFO. An invalid descriptor leaves errno.
Descriptor openSource(int folder, const std::string& name, Links links);

// Makes a new file of the content and attributes of an open one, of which it shares the blocks; none where the volume
// cannot do that. `status` is of the source, looked at before.
Result<Descriptor> cloneFile(int source, const darwin::ItemStatus& status, const Place& copy, const std::string& path,
                             CopyReport& report);
// The same into a new empty file, byte by byte. A source that changes meanwhile is copied again, up to three times.
Status copyFile(int source, darwin::ItemStatus status, int copy, const std::string& path, CopyReport& report);
// Copies what an open folder holds, and its attributes, into a new empty one.
Status copyTree(int source, int copy, const std::string& path, CopyReport& report);
// Copies a symbolic link, with its times, under a name that nothing has; leaves nothing behind when it fails.
Status copyLink(int folder, const std::string& name, const Place& copy, const std::string& path, CopyReport& report);
// Gives a copy the attributes, access list, mode and dates of its source, but no lock, and as administrator its owner.
// Only where it gets no owner does that fail.
Status copyAttributes(int source, const darwin::ItemStatus& status, int copy, const std::string& path,
                      CopyReport& report);

}  // namespace vantory::macos
