// Two patterns walked at once.
#include "catalog/definitions/Wildcards.h"

#include <algorithm>
#include <utility>

#include "base/Text.h"

namespace vantory {

namespace {

// Letters beyond ASCII that a disk may take for ASCII ones.
constexpr std::pair<std::string_view, std::string_view> kFolded[] = {
    {"\u017f", "s"},  {"\u212a", "k"},   {"\u00df", "ss"},  {"\u1e9e", "ss"}, {"\ufb00", "ff"}, {"\ufb01", "fi"},
    {"\ufb02", "fl"}, {"\ufb03", "ffi"}, {"\ufb04", "ffl"}, {"\ufb05", "st"}, {"\ufb06", "st"}};

}  // namespace

// Most differ before the first wildcard. Then row after row: whether the first i bytes of one and the first j of the
// other could be the same text.
bool couldBothMatch(std::string_view one, std::string_view other) {
  while (!one.empty() && !other.empty() && one.front() == other.front() && one.front() != '*') {
    one.remove_prefix(1);
    other.remove_prefix(1);
  }
  if (!one.starts_with('*') && !other.starts_with('*')) return one.empty() && other.empty();
  std::vector<bool> row(other.size() + 1), next(other.size() + 1);
  for (std::size_t i = 0; i <= one.size(); ++i) {
    for (std::size_t j = 0; j <= other.size(); ++j) {
      const bool isStar = i > 0 && one[i - 1] == '*', isOtherStar = j > 0 && other[j - 1] == '*';
      next[j] = i == 0 && j == 0;
      if (i > 0 && (isStar || isOtherStar)) next[j] = next[j] || row[j];
      if (j > 0 && (isStar || isOtherStar)) next[j] = next[j] || next[j - 1];
      if (i > 0 && j > 0 && !isStar && !isOtherStar && one[i - 1] == other[j - 1]) next[j] = row[j - 1];
    }
    std::swap(row, next);
  }
  return row[other.size()];
}

bool couldMeet(const std::vector<std::string>& one, const std::vector<std::string>& other) {
  for (std::size_t i = 0; i < std::min(one.size(), other.size()); ++i)
    if (!couldBothMatch(one[i], other[i])) return false;
  return true;
}

// The root's slash parts nothing.
std::vector<std::string> foldedComponents(std::string_view pattern) {
  return split(foldedForDisks(pattern.substr(pattern.starts_with('/') ? 1 : 0)), '/');
}

std::string foldedForDisks(std::string_view name) {
  std::string folded = lowerCased(name);
  for (const auto& [letter, plain] : kFolded)
    for (std::size_t at = folded.find(letter); at != std::string::npos; at = folded.find(letter, at))
      folded.replace(at, letter.size(), plain);
  return folded;
}

}  // namespace vantory
