// What differs between two texts, line by line.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace vantory {

struct LineChange {
  std::size_t number;  // counted from 1: of a removed line in the first text, of an added one in the second
  bool added;
  std::string line;  // without its end
};

// The fewest lines that were removed and added, in the order of the texts. None where more than `most` lines differ.
// Time grows with the length of the texts times `most`.
std::optional<std::vector<LineChange>> lineChanges(std::string_view before, std::string_view after, std::size_t most);

}  // namespace vantory
