// Compares texts by the method of Myers: the shortest way through both, step by step further off the straight one.
#include "base/LineChanges.h"

#include <algorithm>

namespace vantory {

namespace {

using Lines = std::vector<std::string_view>;

// A text that does not end with a line's end has one line more than line ends.
Lines linesOf(std::string_view text) {
  Lines lines;
  while (!text.empty()) {
    const std::size_t end = text.find('\n');
    lines.push_back(text.substr(0, end));
    text.remove_prefix(end == std::string_view::npos ? text.size() : end + 1);
  }
  return lines;
}

// How far each diagonal was followed with so many differing lines: the number of lines of the first text.
class Furthest {
 public:
  explicit Furthest(long most) : reach_(static_cast<std::size_t>(2 * most + 3), 0), middle_(most + 1) {}
  long& operator[](long diagonal) { return reach_[static_cast<std::size_t>(diagonal + middle_)]; }
  long operator[](long diagonal) const { return reach_[static_cast<std::size_t>(diagonal + middle_)]; }

 private:
  std::vector<long> reach_;
  long middle_;
};

class Comparing {
 public:
  Comparing(const Lines& before, const Lines& after) : before_(before), after_(after) {}

  std::optional<std::vector<LineChange>> changes(long most) {
    const long goal = countOf(before_) - countOf(after_);
    Furthest furthest(most);
    std::vector<Furthest> steps;
    for (long differing = 0; differing <= most; ++differing) {
      steps.push_back(furthest);
      for (long diagonal = -differing; diagonal <= differing; diagonal += 2) {
        long line = isAddition(furthest, diagonal, differing) ? furthest[diagonal + 1] : furthest[diagonal - 1] + 1;
        while (line < countOf(before_) && line - diagonal < countOf(after_) && line >= diagonal &&
               before_[at(line)] == after_[at(line - diagonal)])
          ++line;
        furthest[diagonal] = line;
        if (diagonal == goal && line >= countOf(before_)) return wayBack(steps);
      }
    }
    return std::nullopt;
  }

 private:
  static long countOf(const Lines& lines) { return static_cast<long>(lines.size()); }
  static std::size_t at(long line) { return static_cast<std::size_t>(line); }

  // Whether the diagonal is reached by a line of the second text.
  static bool isAddition(const Furthest& furthest, long diagonal, long differing) {
    return diagonal == -differing || (diagonal != differing && furthest[diagonal - 1] < furthest[diagonal + 1]);
  }

  // From the ends of both texts back to their beginnings.
  std::vector<LineChange> wayBack(const std::vector<Furthest>& steps) const {
    std::vector<LineChange> changes;
    long line = countOf(before_);
    long diagonal = line - countOf(after_);
    for (long differing = static_cast<long>(steps.size()) - 1; differing > 0; --differing) {
      const Furthest& furthest = steps[at(differing)];
      if (isAddition(furthest, diagonal, differing)) {
        line = furthest[++diagonal];
        const long added = line - diagonal;
        changes.push_back({at(added + 1), true, std::string(after_[at(added)])});
      } else {
        line = furthest[--diagonal];
        changes.push_back({at(line + 1), false, std::string(before_[at(line)])});
      }
    }
    std::ranges::reverse(changes);
    return changes;
  }

  const Lines& before_;
  const Lines& after_;
};

}  // namespace

std::optional<std::vector<LineChange>> lineChanges(std::string_view before, std::string_view after, std::size_t most) {
  Lines old = linesOf(before);
  Lines young = linesOf(after);
  const auto [oldEnd, youngEnd] = std::mismatch(old.begin(), old.end(), young.begin(), young.end());
  const auto same = static_cast<std::size_t>(oldEnd - old.begin());
  old.erase(old.begin(), oldEnd);
  young.erase(young.begin(), youngEnd);
  while (!old.empty() && !young.empty() && old.back() == young.back()) {
    old.pop_back();
    young.pop_back();
  }
  auto changes = Comparing(old, young).changes(static_cast<long>(most));
  if (changes)
    for (LineChange& change : *changes) change.number += same;
  return changes;
}

}  // namespace vantory
