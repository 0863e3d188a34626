// What macOS reads of a program that is no bundle: its name, and why it speaks to others.
#include <algorithm>
#include <array>

namespace {

constexpr char kText[] = R"(<?xml version="1.0" encoding="UTF-8"?>
<!DOCTYPE plist PUBLIC "-//Apple//DTD PLIST 1.0//EN" "http://www.apple.com/DTDs/PropertyList-1.0.dtd">
<plist version="1.0"><dict>
<key>CFBundleInfoDictionaryVersion</key><string>6.0</string>
<key>CFBundleIdentifier</key><string>com.quarrywell.Vantory</string>
<key>CFBundleName</key><string>Vantory</string>
<key>CFBundleExecutable</key><string>vantory</string>
<key>CFBundleShortVersionString</key><string>)" VANTORY_VERSION R"(</string>
<key>CFBundleVersion</key><string>)" VANTORY_VERSION R"(</string>
<key>LSMinimumSystemVersion</key><string>12.0</string>
<key>NSAppleEventsUsageDescription</key>
<string>Applications are asked to quit before their preference files are moved or replaced.</string>
</dict></plist>
)";

// Without the zero behind a text.
using Bytes = std::array<char, sizeof kText - 1>;
constexpr Bytes bytesOf(const char* text) {
  Bytes bytes{};
  std::copy_n(text, bytes.size(), bytes.begin());
  return bytes;
}

[[gnu::used, gnu::section("__TEXT,__info_plist")]] constexpr Bytes kDescription = bytesOf(kText);

}  // namespace
