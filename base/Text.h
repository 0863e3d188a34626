// Small questions about text: trimming, cases, encodings.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace vantory {

// Without white space and line ends, those of Unicode too, at both ends.
std::string_view trimmed(std::string_view text);
// At most so many bytes of the text's beginning, no character of which is cut in two.
std::string_view shortened(std::string_view text, std::size_t length);
// ASCII letters only; all other bytes stay.
std::string lowerCased(std::string_view text);
// Below, at or above zero, ignoring the case of ASCII letters.
int compareIgnoringCase(std::string_view left, std::string_view right);
// The order of names for people: below, at or above zero, ignoring the case of all letters; names that differ in
// nothing else go by their bytes.
int compareNames(std::string_view left, std::string_view right);
// Split at every separator; always at least one piece, empty pieces kept.
std::vector<std::string> split(std::string_view text, char separator);
// All of them, with `between` between each two.
std::string joined(const std::vector<std::string>& texts, std::string_view between);
bool isUtf8(std::string_view bytes);
// The bytes of the UTF-8 character that the text begins with; 0 where it begins with none.
std::size_t utf8CharacterLength(std::string_view text);
// The number of a whole UTF-8 character.
char32_t codeOf(std::string_view character);
// Whether a whole character is a control character, one that some programs take for the end of a line, or one that
// turns the text around it, so that it reads as another.
bool isControlCharacter(std::string_view character);
// False for bytes that are no UTF-8 and for characters that XML 1.0 forbids.
bool xmlCanHold(std::string_view text);
// The number of 16-bit units the text has in UTF-16; a byte that is no UTF-8 counts as one.
std::size_t utf16Length(std::string_view text);
// Control characters, as above, as "\n", "\t", "\x1b" and bytes that are no UTF-8 as "\xff": one line of text, whatever
// the bytes.
std::string printable(std::string_view bytes);
// Whether a shell takes the text as it is between double quotes.
bool standsInQuotes(std::string_view text);

}  // namespace vantory
