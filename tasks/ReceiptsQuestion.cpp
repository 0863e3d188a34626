// "--receipts": what tasks did lately.

#include <algorithm>
#include <ostream>
#include <set>

#include "base/Json.h"
#include "base/Text.h"
#include "base/TextTable.h"
#include "services/QWLocalPaths.h"
#include "services/receipts/Receipt.h"
#include "services/receipts/ReceiptText.h"
#include "tasks/HomeCheck.h"
#include "tasks/Question.h"

namespace vantory {

namespace {

// Scripts read these words too, so they stay as they are.
const char* stateOf(const Receipt& receipt) {
  if (receipt.isRunning) return "running";
  if (receipt.isUndone) return "undone";
  if (!receipt.ended) return "killed";
  return receipt.outcome == receipt::kWhole ? "done" : "in part";
}

// A file that was replaced is one file, and so is a backup with all that was copied into it.
std::size_t filesIn(const Receipt& receipt) {
  std::set<std::string> paths;
  for (const ReceiptStep& step : receipt.steps)
    if (step.isDone && step.action != FileAction::Create) paths.insert(step.path);
  return paths.size();
}

std::string taskOf(const Receipt& receipt) {
  std::string words = receipt.task;
  for (const std::string& operand : receipt.operands) words += " " + operand;
  return receipt.undoes.empty() ? words : receipt.task + " " + receipt.undoes;
}

std::string json(const std::vector<Receipt>& receipts) {
  PropertyListArray list;
  for (const Receipt& receipt : receipts) {
    PropertyListDictionary entry;
    entry.append("name", receipt.name);
    entry.append("task", receipt.task);
    PropertyListArray operands;
    for (const std::string& operand : receipt.operands) operands.push_back(operand);
    entry.append("operands", std::move(operands));
    entry.append("begun", receipt.begun);
    if (receipt.ended) entry.append("ended", *receipt.ended);
    entry.append("files", filesIn(receipt));
    entry.append("state", stateOf(receipt));
    if (!receipt.undoes.empty()) entry.append("undoes", receipt.undoes);
    list.push_back(std::move(entry));
  }
  PropertyListDictionary listing;
  listing.append("receipts", std::move(list));
  return writeJson(std::move(listing)) + "\n";
}

}  // namespace

int listReceipts(const QuestionContext& context) {
  if (const auto reason = reasonToRefuse(QWLocalPaths::userDirectory(), false)) {
    context.errors << "Vantory: " << printable(*reason) << '\n';
    return 1;
  }
  const std::vector<Receipt> receipts = allReceipts();
  if (context.form == AnswerForm::Json) {
    context.output << json(receipts);
  } else if (context.form == AnswerForm::Names) {
    for (const Receipt& receipt : receipts) context.output << receipt.name << '\0';
  } else if (receipts.empty()) {
    context.output << "No task has left a receipt yet.\n";
  } else {
    TextTable table({"RECEIPT", "WHEN", "FILES", "STATE", "TASK"});
    for (const Receipt& receipt : receipts)
      table.add({receipt.name, localTimeText(receipt.begun, "%F %T"), std::to_string(filesIn(receipt)),
                 stateOf(receipt), taskOf(receipt)});
    context.output << table.text();
  }
  return 0;
}

}  // namespace vantory
