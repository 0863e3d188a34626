// Finds the question that a command line asks, and answers it.
#include "tasks/Question.h"

#include <algorithm>

#include "tasks/Refusal.h"
#include "tasks/TaskCommand.h"
#include "tasks/TaskOptions.h"

namespace vantory {

namespace {

constexpr std::string_view kPreview = "--preview";

constexpr Question kQuestions[] = {
    {"--list-items", "", "List applications, their items with keys, and the files that are there.", listItems, false,
     true},
    {"--list-backups", "", "List the backups of the library and what they hold.", listBackups, false, true},
    {"--receipts", "", "List what tasks did lately, and what of it was taken back.", listReceipts, false, true},
    {kPreview, "TASK [OPERANDS]", "Tell what a task, given without its dash, would do.", previewTask, true, false},
    {"--compare", "BACKUP [BACKUP] [KEYS]", "Tell what restoring a backup would change, or what differs between two.",
     compareBackup, true, false},
    {"--verify", "[BACKUP...]", "Tell whether backups are sound (default: all of the library).", verifyBackups, true,
     false},
    {"--check-catalog", "FILE...", "Tell what is wrong with catalog files, or what they name here.", checkCatalog, true,
     false},
    {"--self-check", "[FOLDER]", "Tell whether the system does all that is built on (in FOLDER, or the temporary one).",
     checkSelf, true, false},
};

// How an answer is written, as against what is asked.
bool isForm(std::string_view argument) {
  return argument == kJson || argument == kPrint0;
}

// Why the question cannot be answered; empty when it can.
std::string faultOf(const Question& question, const std::vector<std::string>& arguments, std::size_t position) {
  const auto has = [&](std::string_view form) { return std::ranges::count(arguments, form) > 0; };
  const std::string option(question.option);
  for (std::size_t i = 1; i < arguments.size(); ++i) {
    const bool isExpected = isForm(arguments[i]) || i == position || (i > position && question.takesOperands);
    if (!isExpected) return option + " does not go with \"" + arguments[i] + "\".";
  }
  if (has(kPrint0) && !question.hasNames) return option + " has no names to print with --print0.";
  if (has(kPrint0) && has(kJson)) return "--json and --print0 exclude each other.";
  return "";
}

// The first argument but for the options of tasks; empty when there is none.
std::string_view firstBehindOptions(const std::vector<std::string>& arguments) {
  for (std::size_t i = 1; i < arguments.size(); ++i)
    if (!isTaskOption(arguments[i])) return arguments[i];
  return "";
}

AnswerForm formIn(const std::vector<std::string>& arguments) {
  for (const std::string& argument : arguments)
    if (isForm(argument)) return argument == kJson ? AnswerForm::Json : AnswerForm::Names;
  return AnswerForm::Table;
}

}  // namespace

std::span<const Question> questionTable() {
  return kQuestions;
}

bool beginsWithQuestion(const std::vector<std::string>& arguments) {
  constexpr std::string_view kOthers[] = {"-h", "--help", "--version"};
  const std::string_view first = firstBehindOptions(arguments);
  return std::ranges::count(kOthers, first) > 0 || std::ranges::count(kQuestions, first, &Question::option) > 0;
}

bool beginsWithPreview(const std::vector<std::string>& arguments) {
  return firstBehindOptions(arguments) == kPreview;
}

const TaskCommand* previewedCommand(const std::vector<std::string>& arguments) {
  if (!beginsWithPreview(arguments)) return nullptr;
  const auto word = std::find_if_not(std::ranges::find(arguments, kPreview) + 1, arguments.end(), isForm);
  return word == arguments.end() ? nullptr : commandNamed(*word);
}

std::optional<int> answerQuestion(const std::vector<std::string>& arguments, std::ostream& output, std::ostream& errors,
                                  const std::function<void(const std::string& sentence)>& found) {
  const auto refuse = [&](const std::string& fault) {
    return refuseLine(fault + " See \"vantory --help\".", arguments, output, errors);
  };
  for (const Question& question : kQuestions) {
    const auto option = std::ranges::find(arguments, question.option);
    if (option == arguments.end()) continue;
    const auto position = static_cast<std::size_t>(option - arguments.begin());
    const std::string fault = faultOf(question, arguments, position);
    if (!fault.empty()) return refuse(fault);
    std::vector<std::string> operands(option + 1, arguments.end());
    std::erase_if(operands, isForm);
    return question.answer({std::move(operands), formIn(arguments), output, errors, found});
  }
  if (std::ranges::count(arguments, kPrint0) > 0) return refuse("There is nothing to list.");
  return std::nullopt;
}

}  // namespace vantory
