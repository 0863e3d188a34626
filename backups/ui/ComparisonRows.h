// What a comparison found, as rows of an outline with ticks for what is to be put back.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "backups/comparison/PartialRestore.h"
#include "backups/ui/OutlineView.h"

namespace vantory {

// An application, an item, a file, or a key or line of one. The comparison outlives its rows.
struct ComparisonRow : OutlineItem {
  std::string identity() const override { return id; }

  std::string id;
  std::string title;
  std::string now = {};       // what is there
  std::string inBackup = {};  // what a restore would make of it
  std::string remark = {};
  bool canBeTicked = false;  // something of it can be put back
  State state = Off;         // without a check box it follows that above
  std::weak_ptr<ComparisonRow> above = {};
  std::vector<std::shared_ptr<ComparisonRow>> below = {};
  const ItemComparison* item = nullptr;
  const FileComparison* file = nullptr;
  const KeyChange* key = nullptr;
};
using ComparisonRows = std::vector<std::shared_ptr<ComparisonRow>>;

// The applications with all below them that is not the same.
ComparisonRows comparisonRows(const Comparison& comparison);

// Ticks or unticks a row with all below it. A row above is on where everything below it is, also what has no check box:
// only then is the whole of it meant.
void tickRow(ComparisonRow& row, State state);

// What the ticks ask for; empty for nothing.
std::vector<ItemChoice> tickedChoices(const ComparisonRows& applications);

}  // namespace vantory
