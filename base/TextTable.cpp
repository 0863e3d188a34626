// Lays out columns.
#include "base/TextTable.h"

#include <algorithm>

#include "base/Text.h"

namespace vantory {

namespace {

// Every byte begins a character but those that continue one.
std::size_t characters(const std::string& text) {
  const auto begins = [](char byte) { return (static_cast<unsigned char>(byte) & 0xC0) != 0x80; };
  return static_cast<std::size_t>(std::ranges::count_if(text, begins));
}

}  // namespace

void TextTable::add(Row row) {
  widths_.resize(row.size());
  for (std::size_t i = 0; i < row.size(); ++i) {
    row[i] = printable(row[i]);
    widths_[i] = std::max(widths_[i], characters(row[i]));
  }
  rows_.push_back(std::move(row));
}

// Without blanks at the ends of lines.
std::string TextTable::text() const {
  std::string text;
  for (const Row& row : rows_) {
    std::string line;
    for (std::size_t i = 0; i < row.size(); ++i) line.append(row[i]).append(widths_[i] + 2 - characters(row[i]), ' ');
    line.resize(line.find_last_not_of(' ') + 1);
    text.append(line).append(1, '\n');
  }
  return text;
}

}  // namespace vantory
