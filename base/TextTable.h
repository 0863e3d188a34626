// Tables for people at a terminal.
#pragma once

#include <string>
#include <vector>

namespace vantory {

// Columns as wide as their widest text, two blanks between them. A cell is one line whatever its bytes.
class TextTable {
 public:
  using Row = std::vector<std::string>;

  // All rows have as many cells as the heading.
  explicit TextTable(Row heading) { add(std::move(heading)); }
  void add(Row row);
  // Each line with its end.
  std::string text() const;

 private:
  std::vector<Row> rows_;
  std::vector<std::size_t> widths_;
};

}  // namespace vantory
