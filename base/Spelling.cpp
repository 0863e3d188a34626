// Counts by how much words differ.
#include "base/Spelling.h"

#include <algorithm>

#include "base/Text.h"

namespace vantory {

namespace {

constexpr std::size_t kLongestWord = 64;       // bytes; what is longer is no slip of the fingers
constexpr std::size_t kShortestBeginning = 2;  // bytes that stand for a longer word

// How many letters have to be added, left out, changed or swapped with their neighbour to get from one to the other.
std::size_t distance(std::string_view one, std::string_view other) {
  const std::size_t width = other.size() + 1;
  std::vector<std::size_t> table((one.size() + 1) * width);
  const auto at = [&](std::size_t i, std::size_t j) -> std::size_t& { return table[i * width + j]; };
  for (std::size_t i = 0; i <= one.size(); ++i)
    for (std::size_t j = 0; j <= other.size(); ++j) {
      if (i == 0 || j == 0) {
        at(i, j) = i + j;
        continue;
      }
      const std::size_t changed = at(i - 1, j - 1) + (one[i - 1] == other[j - 1] ? 0 : 1);
      at(i, j) = std::min({at(i - 1, j) + 1, at(i, j - 1) + 1, changed});
      if (i > 1 && j > 1 && one[i - 1] == other[j - 2] && one[i - 2] == other[j - 1])
        at(i, j) = std::min(at(i, j), at(i - 2, j - 2) + 1);
    }
  return at(one.size(), other.size());
}

}  // namespace

std::optional<std::string> nearestWord(std::string_view word, const std::vector<std::string>& known) {
  const std::string typed = lowerCased(trimmed(word));
  if (typed.empty() || typed.size() > kLongestWord) return std::nullopt;
  const std::size_t most = std::max<std::size_t>(1, typed.size() / 3);
  const std::string* nearest = nullptr;
  std::size_t least = kLongestWord * 2;
  for (const std::string& candidate : known) {
    const std::string folded = lowerCased(candidate);
    const std::size_t differs = distance(typed, folded);
    const bool isBeginning = typed.size() >= kShortestBeginning && folded.starts_with(typed);
    if (differs >= least || (differs > most && !isBeginning)) continue;
    least = differs;
    nearest = &candidate;
  }
  return nearest ? std::optional(*nearest) : std::nullopt;
}

}  // namespace vantory
