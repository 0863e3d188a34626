// What a mistyped word was meant to be.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace vantory {

// The known word that differs least: by few letters added, left out, changed or swapped, by the case of ASCII letters,
// or by an end that is missing. None where nothing comes near; of two that differ alike, the first.
std::optional<std::string> nearestWord(std::string_view word, const std::vector<std::string>& known);

}  // namespace vantory
