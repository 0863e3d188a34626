// Writes a key and its modifiers as people read them.
#include "settings/ShortcutKey.h"

#include <map>

namespace vantory {

std::uint16_t ShortcutKey::modifiers() const {
  return static_cast<std::uint16_t>((cmd ? kCommandModifier : 0) | (shift ? kShiftModifier : 0) |
                                    (opt ? kOptionModifier : 0) | (ctrl ? kControlModifier : 0));
}

ShortcutKey captured(ShortcutKey pressed) {
  if (pressed.shift || pressed.ctrl || pressed.opt) return pressed;
  pressed.shift = !pressed.cmd;
  pressed.cmd = true;
  return pressed;
}

// By the codes of a Mac's keyboard, which the shared list stores.
std::optional<std::string> keyCodeName(std::uint32_t keycode) {
  // clang-format off
  static const std::map<std::uint32_t, const char*> names = {
      {0, "A"}, {11, "B"}, {8, "C"}, {2, "D"}, {14, "E"}, {3, "F"}, {5, "G"}, {4, "H"}, {34, "I"}, {38, "J"},
      {40, "K"}, {37, "L"}, {46, "M"}, {45, "N"}, {31, "O"}, {35, "P"}, {12, "Q"}, {15, "R"}, {1, "S"}, {17, "T"},
      {32, "U"}, {9, "V"}, {13, "W"}, {7, "X"}, {16, "Y"}, {6, "Z"},
      {29, "0"}, {18, "1"}, {19, "2"}, {20, "3"}, {21, "4"}, {23, "5"}, {22, "6"}, {26, "7"}, {28, "8"}, {25, "9"},
      {27, "-"}, {24, "="}, {33, "["}, {30, "]"}, {41, ";"}, {39, "'"}, {43, ","}, {47, "."}, {44, "/"}, {42, "\\"},
      {50, "`"}, {10, "§"},
      {36, "Return"}, {48, "Tab"}, {49, "Space"}, {51, "Backspace"}, {53, "Escape"}, {57, "Caps Lock"},
      {114, "Help"}, {115, "Home"}, {116, "Page Up"}, {117, "Delete"}, {119, "End"}, {121, "Page Down"},
      {123, "Left"}, {124, "Right"}, {125, "Down"}, {126, "Up"}, {110, "Menu"},
      {122, "F1"}, {120, "F2"}, {99, "F3"}, {118, "F4"}, {96, "F5"}, {97, "F6"}, {98, "F7"}, {100, "F8"},
      {101, "F9"}, {109, "F10"}, {103, "F11"}, {111, "F12"}, {105, "F13"}, {107, "F14"}, {113, "F15"}, {106, "F16"},
      {64, "F17"}, {79, "F18"}, {80, "F19"}, {90, "F20"},
      {72, "Volume Up"}, {73, "Volume Down"}, {74, "Mute"},
      {82, "Keypad 0"}, {83, "Keypad 1"}, {84, "Keypad 2"}, {85, "Keypad 3"}, {86, "Keypad 4"}, {87, "Keypad 5"},
      {88, "Keypad 6"}, {89, "Keypad 7"}, {91, "Keypad 8"}, {92, "Keypad 9"}, {65, "Keypad ."}, {67, "Keypad *"},
      {69, "Keypad +"}, {71, "Clear"}, {75, "Keypad /"}, {76, "Enter"}, {78, "Keypad -"}, {81, "Keypad ="}};
  // clang-format on
  const auto known = names.find(keycode);
  if (known == names.end()) return std::nullopt;
  return known->second;
}

}  // namespace vantory
