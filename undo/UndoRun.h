// Takes a task back, by its receipt.
#pragma once

#include <map>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include "backups/ClosedApplications.h"
#include "backups/ReplacedCopies.h"
#include "services/receipts/Receipt.h"
#include "undo/TrashIndex.h"

namespace vantory {

class FolderHold;

// One run: what the task trashed returns to its place, what it put there goes to the Trash, locks and names are again
// what they were, the last deed first. Nothing is ever written over: what has changed since stays and is told in the
// report, and the rest is done. The catalog must be there.
class UndoRun {
 public:
  // All outlive it but the receipt.
  UndoRun(const Receipt& receipt, const std::vector<Receipt>& all, TaskReport& report);

  // Blocks until all is done, and is on disk.
  void run();

 private:
  using Deeds = std::vector<ReceiptStep>;

  bool makeWay(Deeds& deeds);
  void plan(const Deeds& deeds);
  void takeBack(const ReceiptStep& deed);
  std::string presentPlace(const ReceiptStep& deed);
  Status checkIsInTrash(const ReceiptStep& deed);
  void putBack(const ReceiptStep& deed);
  void trashWhatWasPut(const ReceiptStep& deed);
  void moveBack(const ReceiptStep& deed);
  void putDefaultBack(const ReceiptStep& deed);
  void setLocks(FileAction deed, const std::vector<const ReceiptStep*>& deeds);
  std::size_t takeBackLocks(const Deeds& deeds, std::size_t last);
  void findReplacedCopies(const Deeds& deeds);
  void tidyReplacedCopies();
  void removeUnfinished();
  bool mustStay(const ReceiptStep& deed);
  void replaceBack(const ReceiptStep& deed);
  void makeDurable();
  void refuse(FileAction action, const std::string& path, std::string reason, const ReceiptStep& deed);
  bool isAllowed(const std::string& path) const;

  const Receipt receipt_;
  const std::vector<Receipt>& all_;
  TaskReport& report_;
  std::vector<std::string> roots_;  // where alone anything is done
  ClosedApplications applications_;
  TrashIndex trash_;
  std::map<std::string, std::string> trashedFolders_;  // of replaced copies, and where each lies now
  std::map<std::string, ReplacedCopies> replaced_;     // of each backup
  std::vector<std::string> noted_;                     // backups that are to be noted what they hold
  std::set<std::string> staying_;                      // changed since
  bool touchesLibrary_ = false;
  bool changedAnything_ = false;
};

}  // namespace vantory
