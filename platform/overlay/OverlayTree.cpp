// Resolves paths through what was moved, made and removed.
#include "platform/overlay/OverlayTree.h"

#include <utility>

#include "base/Paths.h"

namespace vantory {

namespace {

// What is below a folder, as its own node tells.
OverlayNode below(const OverlayNode& folder, const std::string& rest) {
  OverlayNode node;
  if (folder.kind != OverlayNode::Kind::OnDisk) return node;
  node.kind = OverlayNode::Kind::OnDisk;
  node.origin = folder.origin + rest;
  node.isCopy = folder.isCopy;
  return node;
}

}  // namespace

// The nearest known folder above decides; where there is none, the disk.
OverlayNode OverlayTree::at(const std::string& path) const {
  for (std::string folder = path; !nodes_.empty(); folder = paths::parent(folder)) {
    const auto known = nodes_.find(folder);
    if (known != nodes_.end()) return folder == path ? known->second : below(known->second, path.substr(folder.size()));
    if (folder.size() <= 1) break;
  }
  return {.kind = OverlayNode::Kind::OnDisk, .origin = path};
}

// Nothing of what was there before shines through.
void OverlayTree::put(const std::string& path, OverlayNode node) {
  remove(path);
  nodes_[path] = std::move(node);
}

// The empty node hides what the disk has.
void OverlayTree::remove(const std::string& path) {
  const auto [first, last] = rangeBelow(path);
  nodes_.erase(first, last);
  nodes_[path] = {};
}

// The nodes below go along, each under its new name.
void OverlayTree::move(const std::string& path, const std::string& destination) {
  Nodes moved;
  const auto [first, last] = rangeBelow(path);
  for (auto entry = first; entry != last; ++entry)
    moved[destination + entry->first.substr(path.size())] = entry->second;
  put(destination, at(path));
  nodes_.merge(moved);
  remove(path);
}

OverlayNode& OverlayTree::own(const std::string& path) {
  return nodes_.try_emplace(path, at(path)).first->second;
}

std::set<std::string> OverlayTree::children(const std::string& folder) const {
  std::set<std::string> names;
  const auto [first, last] = rangeBelow(folder);
  for (auto entry = first; entry != last; ++entry) {
    std::string name = entry->first.substr(folder.size() + (folder.size() > 1));
    if (name.find('/') == std::string::npos) names.insert(std::move(name));
  }
  return names;
}

std::string OverlayTree::placeOnDisk(const std::string& path) const {
  const OverlayNode node = at(paths::normalized(path));
  return node.kind == OverlayNode::Kind::OnDisk ? node.origin : path;
}

// Everything that begins with the folder and a slash.
std::pair<OverlayTree::Nodes::const_iterator, OverlayTree::Nodes::const_iterator> OverlayTree::rangeBelow(
    const std::string& folder) const {
  const std::string start = folder.size() > 1 ? folder : "";
  return {nodes_.upper_bound(start + '/'), nodes_.lower_bound(start + static_cast<char>('/' + 1))};
}

}  // namespace vantory
