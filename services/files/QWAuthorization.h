// Administrator rights, and the file operations done with them.
#pragma once

#include <atomic>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "platform/Platform.h"

namespace vantory {

// One for the process. The superuser is always authorized. Refusals of protected folders go to the system log and are
// final. Any thread.
class QWAuthorization {
 public:
  // The first call decides whether a password dialog may be shown; later calls answer the same instance unchanged.
  static QWAuthorization& sharedController(bool hasGUI = true);

  enum Status : int { Success = 0, NotAuthorized = -1, ToolMissing = -2 };

  QWAuthorization();
  ~QWAuthorization();  // gives the right up
  QWAuthorization(const QWAuthorization&) = delete;
  QWAuthorization& operator=(const QWAuthorization&) = delete;

  bool isAuthorized() const;
  bool canAuthorize() const;
  void setHasGUI(bool hasGUI);
  // Obtains the right, asking the user, also one who refused before; at once true when it is held already.
  bool authStart();
  // The same without asking, by name and password. The system's own dialog alone takes passwords here: nobody but the
  // superuser gets the right, which is told in the system log, and the right that was held is given up.
  bool authStartWithUser(const std::string& user, const std::string& password);
  // A task begins, which may ask again after the refusal of an earlier one. The right is kept.
  void beginTask();
  // Gives the right up, and forgets a refusal.
  void authEnd();

  // Performs the tool's work with administrator rights, to its end; Success, NotAuthorized, ToolMissing or the
  // service's own code. Asks the user for the right when it is not held, but not again after a refusal. The operations
  // below do their work by this, and each answers whether the work was done, also for the superuser.
  int authExecTask(const std::string& tool, const std::vector<std::string>& parameters);

  // A copy goes into a folder that is at the destination, and a file's over a file there; a folder's goes over nothing,
  // nor does a move. A link is copied as a link. An empty path is an error that is told in the system log.
  bool authCopyFile(const std::string& source, const std::string& toPath);
  bool authMoveFile(const std::string& source, const std::string& toPath);
  // Every entry of the folder is tried; true when all were moved.
  bool authMoveFolderContents(const std::string& folder, const std::string& toPath);
  // A missing item is success.
  bool authRemoveFile(const std::string& path);
  bool authCreateDir(const std::string& path);
  // To the user's Trash, with the note beside it by which a file manager puts it back.
  bool authTrashFile(const std::string& path, bool deleteOnRootAccount = false);
  // The same, answering where it lies now; none when that failed.
  std::optional<std::string> trashedPlace(const std::string& path);
  // Every entry of the folder is tried; true when none failed.
  bool authTrashFolderContents(const std::string& folder, bool deleteOnRootAccount = false);

  // Sets, for all users of the machine, whether the program asks for the right when it starts.
  bool authRequireAdministrator(bool required);

 private:
  bool isSuperuser() const;
  bool isProtected(const std::string& path, const char* message) const;
  bool refuse(const char* message) const;
  bool authorizeForTask();
  bool ask();
  bool makeFolder(const std::string& path);
  bool putNote(const std::string& note, const std::string& text);
  // Where an item can go in the Trash; none when it may not, or nobody has one.
  std::optional<std::string> freePlaceFor(const std::string& path) const;
  // The superuser has no Trash of its own: whether its items are to be deleted instead.
  bool deletesInsteadOfTrashing(bool deleteOnRootAccount) const;

  Platform& platform_;
  std::once_flag decided_;
  std::mutex asking_;     // one password dialog at a time
  bool refused_ = false;  // the last dialog was; under the mutex
  std::atomic<bool> hasGUI_ = true;
  std::optional<std::string> userDirectory_;  // none for the superuser
};

}  // namespace vantory
