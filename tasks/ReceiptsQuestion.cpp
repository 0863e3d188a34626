// "--receipts": what tasks did lately.

#include <ostream>

#include "base/Json.h"
#include "base/Text.h"
#include "base/TextTable.h"
#include "services/QWLocalPaths.h"
#include "services/log/QWLog.h"
#include "services/receipts/Receipt.h"
#include "tasks/HomeCheck.h"
#include "tasks/Question.h"
#include "tasks/ReceiptTitle.h"
#include "tasks/Refusal.h"

namespace vantory {

namespace {

std::string taskOf(const Receipt& receipt) {
  std::string words = receipt.task;
  for (const std::string& operand : receipt.operands) words += " " + operand;
  return receipt.undoes.empty() ? words : receipt.task + " " + receipt.undoes;
}

std::string json(const std::vector<Receipt>& receipts, const std::vector<UnreadableReceipt>& unreadable) {
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
    if (!receipt.run.empty()) entry.append("run", receipt.run);
    if (!receipt.undoes.empty()) entry.append("undoes", receipt.undoes);
    list.push_back(std::move(entry));
  }
  PropertyListArray faults;
  for (const UnreadableReceipt& receipt : unreadable) {
    PropertyListDictionary entry;
    entry.append("name", receipt.name);
    entry.append("error", receipt.reason);
    faults.push_back(std::move(entry));
  }
  PropertyListDictionary listing;
  listing.append("receipts", std::move(list));
  listing.append("unreadable", std::move(faults));
  return writeJson(std::move(listing)) + "\n";
}

}  // namespace

int listReceipts(const QuestionContext& context) {
  if (const auto reason = reasonToRefuse(QWLocalPaths::userDirectory(), false)) return refuseQuestion(*reason, context);
  QWLog::keepSilent();  // the person is told of what cannot be read
  auto all = allReceipts();
  if (!all) return refuseQuestion(all.error().text, context);
  const std::vector<UnreadableReceipt> unreadable = unreadableReceipts(*all);
  std::vector<Receipt>& receipts = *all;
  std::erase_if(receipts, didNothing);
  if (context.form == AnswerForm::Json) {
    context.output << json(receipts, unreadable);
  } else if (context.form == AnswerForm::Names) {
    for (const Receipt& receipt : receipts) context.output << receipt.name << '\0';
  } else if (receipts.empty() && unreadable.empty()) {
    context.output << "No task has left a receipt yet.\n";
  } else {
    TextTable table({"RECEIPT", "WHEN", "FILES", "STATE", "TASK"});
    for (const Receipt& receipt : receipts)
      table.add({receipt.name, localTimeText(receipt.begun, "%F %T"), std::to_string(filesIn(receipt)),
                 stateOf(receipt), taskOf(receipt)});
    context.output << table.text();
  }
  for (const UnreadableReceipt& receipt : unreadable)
    context.errors << "Vantory: " << printable(receipt.reason) << '\n';
  return 0;
}

}  // namespace vantory
