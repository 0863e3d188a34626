// Records changes, each once.
#include "platform/overlay/Changes.h"

#include <system_error>
#include <utility>

namespace vantory {

namespace {

// Where the change makes something that was not there; null when it makes nothing.
std::string* placeMade(Change& change) {
  switch (change.kind) {
    case Change::Kind::Copy:
      return &change.destination;
    case Change::Kind::Write:
    case Change::Kind::CreateFolder:
      return &change.path;
    default:
      return nullptr;
  }
}

bool isAtOrBelow(const std::string& path, const std::string& folder) {
  return path == folder || path.starts_with(folder + "/");
}

// Whether the change is a further attempt at what was refused, maybe in another way.
bool isSuperseded(const Change& earlier, const Change& change) {
  return earlier.refusal && earlier.path == change.path &&
         (earlier.destination.empty() || earlier.destination == change.destination);
}

}  // namespace

// An attempt with more rights takes the place of the refusal before it.
void Changes::add(Change change) {
  if (refused_.contains(change.path))
    std::erase_if(changes_, [&](const Change& earlier) { return isSuperseded(earlier, change); });
  if (change.refusal) refused_.insert(change.path);
  changes_.push_back(std::move(change));
}

Error Changes::refuse(Change change, std::errc code) {
  const std::string reason = std::make_error_code(code).message();
  Error error{code, change.path + ": " + reason};
  change.refusal = reason;
  add(std::move(change));
  return error;
}

void Changes::renameMade(const std::string& path, const std::string& destination) {
  for (Change& change : changes_) {
    std::string* place = placeMade(change);
    if (place && isAtOrBelow(*place, path)) place->replace(0, path.size(), destination);
  }
}

void Changes::trashCopiesIn(const std::string& folder) {
  for (Change& change : changes_)
    if (change.kind == Change::Kind::Copy && !change.refusal && isAtOrBelow(change.destination, folder))
      change = {.kind = Change::Kind::Trash, .path = change.path};
}

void Changes::dropMade(const std::string& path) {
  std::erase_if(changes_, [&](Change& change) {
    const std::string* place = placeMade(change);
    return place && isAtOrBelow(*place, path);
  });
}

}  // namespace vantory
