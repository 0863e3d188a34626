// The table of codes.
#include "window/settings/MacKeyCodes.h"

#include <QKeyEvent>
#include <map>

namespace vantory {

namespace {

using Codes = std::map<quint32, std::uint32_t>;

// clang-format off
const Codes kKeys = {
    {Qt::Key_A, 0}, {Qt::Key_B, 11}, {Qt::Key_C, 8}, {Qt::Key_D, 2}, {Qt::Key_E, 14}, {Qt::Key_F, 3}, {Qt::Key_G, 5},
    {Qt::Key_H, 4}, {Qt::Key_I, 34}, {Qt::Key_J, 38}, {Qt::Key_K, 40}, {Qt::Key_L, 37}, {Qt::Key_M, 46},
    {Qt::Key_N, 45}, {Qt::Key_O, 31}, {Qt::Key_P, 35}, {Qt::Key_Q, 12}, {Qt::Key_R, 15}, {Qt::Key_S, 1},
    {Qt::Key_T, 17}, {Qt::Key_U, 32}, {Qt::Key_V, 9}, {Qt::Key_W, 13}, {Qt::Key_X, 7}, {Qt::Key_Y, 16},
    {Qt::Key_Z, 6},
    {Qt::Key_0, 29}, {Qt::Key_1, 18}, {Qt::Key_2, 19}, {Qt::Key_3, 20}, {Qt::Key_4, 21}, {Qt::Key_5, 23},
    {Qt::Key_6, 22}, {Qt::Key_7, 26}, {Qt::Key_8, 28}, {Qt::Key_9, 25},
    {Qt::Key_Minus, 27}, {Qt::Key_Equal, 24}, {Qt::Key_BracketLeft, 33}, {Qt::Key_BracketRight, 30},
    {Qt::Key_Semicolon, 41}, {Qt::Key_Apostrophe, 39}, {Qt::Key_Comma, 43}, {Qt::Key_Period, 47},
    {Qt::Key_Slash, 44}, {Qt::Key_Backslash, 42}, {Qt::Key_QuoteLeft, 50}, {Qt::Key_section, 10},
    {Qt::Key_Return, 36}, {Qt::Key_Enter, 76}, {Qt::Key_Tab, 48}, {Qt::Key_Backtab, 48}, {Qt::Key_Space, 49},
    {Qt::Key_Backspace, 51}, {Qt::Key_Escape, 53}, {Qt::Key_Help, 114}, {Qt::Key_Insert, 114}, {Qt::Key_Home, 115},
    {Qt::Key_PageUp, 116}, {Qt::Key_Delete, 117}, {Qt::Key_End, 119}, {Qt::Key_PageDown, 121}, {Qt::Key_Left, 123},
    {Qt::Key_Right, 124}, {Qt::Key_Down, 125}, {Qt::Key_Up, 126}, {Qt::Key_Menu, 110}, {Qt::Key_Clear, 71},
    {Qt::Key_F1, 122}, {Qt::Key_F2, 120}, {Qt::Key_F3, 99}, {Qt::Key_F4, 118}, {Qt::Key_F5, 96}, {Qt::Key_F6, 97},
    {Qt::Key_F7, 98}, {Qt::Key_F8, 100}, {Qt::Key_F9, 101}, {Qt::Key_F10, 109}, {Qt::Key_F11, 103},
    {Qt::Key_F12, 111}, {Qt::Key_F13, 105}, {Qt::Key_F14, 107}, {Qt::Key_F15, 113}, {Qt::Key_F16, 106},
    {Qt::Key_F17, 64}, {Qt::Key_F18, 79}, {Qt::Key_F19, 80}, {Qt::Key_F20, 90},
    {Qt::Key_VolumeUp, 72}, {Qt::Key_VolumeDown, 73}, {Qt::Key_VolumeMute, 74}};

const Codes kKeypad = {
    {Qt::Key_0, 82}, {Qt::Key_1, 83}, {Qt::Key_2, 84}, {Qt::Key_3, 85}, {Qt::Key_4, 86}, {Qt::Key_5, 87},
    {Qt::Key_6, 88}, {Qt::Key_7, 89}, {Qt::Key_8, 91}, {Qt::Key_9, 92}, {Qt::Key_Period, 65}, {Qt::Key_Comma, 65},
    {Qt::Key_Asterisk, 67}, {Qt::Key_Plus, 69}, {Qt::Key_Slash, 75}, {Qt::Key_Minus, 78}, {Qt::Key_Equal, 81}};

// Keys that type, by their place: the kernel's numbers and eight, on X11 and Wayland alike.
const Codes kPlaces = {
    {49, 50}, {10, 18}, {11, 19}, {12, 20}, {13, 21}, {14, 23}, {15, 22}, {16, 26}, {17, 28}, {18, 25}, {19, 29},
    {20, 27}, {21, 24},
    {24, 12}, {25, 13}, {26, 14}, {27, 15}, {28, 17}, {29, 16}, {30, 32}, {31, 34}, {32, 31}, {33, 35}, {34, 33},
    {35, 30},
    {38, 0}, {39, 1}, {40, 2}, {41, 3}, {42, 5}, {43, 4}, {44, 38}, {45, 40}, {46, 37}, {47, 41}, {48, 39},
    {51, 42},
    {94, 10}, {52, 6}, {53, 7}, {54, 8}, {55, 9}, {56, 11}, {57, 45}, {58, 46}, {59, 43}, {60, 47}, {61, 44}};
// clang-format on

std::optional<std::uint32_t> codeIn(const Codes& codes, quint32 key) {
  const auto known = codes.find(key);
  if (known == codes.end()) return std::nullopt;
  return known->second;
}

}  // namespace

// By what the key bears first, and by its place on the keyboard where no key of the Mac's bears that.
std::optional<std::uint32_t> macKeyCode(const QKeyEvent& event) {
  const auto key = static_cast<quint32>(event.key());
  if (event.modifiers() & Qt::KeypadModifier)
    if (const auto code = codeIn(kKeypad, key)) return code;
  if (const auto code = codeIn(kKeys, key)) return code;
  return codeIn(kPlaces, event.nativeScanCode());
}

}  // namespace vantory
