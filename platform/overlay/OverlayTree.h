// What stands at a path once the recorded changes are laid over the disk.
#pragma once

#include <cstdint>
#include <map>
#include <mutex>
#include <optional>
#include <set>
#include <string>
#include <utility>

#include "platform/Clock.h"
#include "platform/FileSystem.h"

namespace vantory {

// An item that differs from what the disk has at its path.
struct OverlayNode {
  enum class Kind {
    Gone,
    Folder,   // new; it holds only what the overlay says
    Written,  // a file with `bytes`
    OnDisk    // lies at `origin` on the disk, a folder with all it holds
  };

  Kind kind = Kind::Gone;
  std::string origin = {};
  std::string bytes = {};
  bool isCopy = false;  // of what lies at the origin: never locked, nor the same file
  std::optional<bool> locked = {};
  std::optional<Timestamp> modified = {};
  std::uint64_t number = 0;  // tells things from others that have no number on the disk

  bool isMade() const { return kind == Kind::Folder || kind == Kind::Written || isCopy; }
};

// Paths are compared as text: two ways to one item by links are two items here. Any thread, under `mutex`.
class OverlayTree {
 public:
  std::recursive_mutex mutex;

  // What the overlay says of the path, by itself or by a folder above it.
  OverlayNode at(const std::string& path) const;
  void put(const std::string& path, OverlayNode node);
  // With what is below it.
  void remove(const std::string& path);
  void move(const std::string& path, const std::string& destination);
  // Gives the node at the path, which is there, attributes of its own.
  OverlayNode& own(const std::string& path);
  // The names below a folder about which the overlay has something to say of its own.
  std::set<std::string> children(const std::string& folder) const;

  // Where on the disk the item at the path lies; the path itself when the disk has nothing of it.
  std::string placeOnDisk(const std::string& path) const;

  std::uint64_t newNumber() { return ++lastNumber_; }

 private:
  using Nodes = std::map<std::string, OverlayNode>;

  std::pair<Nodes::const_iterator, Nodes::const_iterator> rangeBelow(const std::string& folder) const;

  Nodes nodes_;
  std::uint64_t lastNumber_ = 0;
};

}  // namespace vantory
