// The words of a receipt, which is a property list in the old text notation with an entry on each line.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "base/Timestamp.h"

namespace vantory::receipt {

inline constexpr const char* kTask = "task";
inline constexpr const char* kVersion = "version";
inline constexpr const char* kOperands = "operands";
inline constexpr const char* kRun = "run";
inline constexpr const char* kUndoes = "undoes";
inline constexpr const char* kBegun = "begun";
inline constexpr const char* kEnded = "ended";
inline constexpr const char* kOutcome = "outcome";
inline constexpr const char* kPlan = "plan";
inline constexpr const char* kDone = "done";
inline constexpr const char* kItem = "item";
inline constexpr const char* kFiles = "files";
inline constexpr const char* kPath = "path";
inline constexpr const char* kSource = "source";
inline constexpr const char* kPlace = "place";
inline constexpr const char* kThere = "there";
inline constexpr const char* kIdentity = "identity";
inline constexpr const char* kSize = "size";
inline constexpr const char* kModified = "modified";

// Of an outcome.
inline constexpr const char* kWhole = "whole";
inline constexpr const char* kInPart = "part";
inline constexpr const char* kBrokenOff = "cancelled";

// Adds a text, in quotes where it must be.
void append(std::string& line, std::string_view text);
// Adds "key = value; ".
void append(std::string& line, std::string_view key, std::string_view value);
// Such as "2026-11-14T21:35:17.000000042Z", and the reverse: none for any other text.
std::string momentText(Timestamp moment);
std::optional<Timestamp> momentIn(std::string_view text);

}  // namespace vantory::receipt
