// What the program answers without doing anything.
#pragma once

#include <functional>
#include <iosfwd>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace vantory {

struct TaskCommand;

inline constexpr std::string_view kPrint0 = "--print0";

enum class AnswerForm { Table, Json, Names };

struct QuestionContext {
  std::vector<std::string> operands;  // what follows the question
  AnswerForm form;
  std::ostream& output;
  std::ostream& errors;
  std::function<void(const std::string& sentence)> found;  // told what is amiss by the answer; may be null
};

// One row of the table of questions.
struct Question {
  std::string_view option;
  std::string_view operands;  // as the help shows them
  std::string_view purpose;
  int (*answer)(const QuestionContext& context);  // answers the exit code
  bool takesOperands;
  bool hasNames;  // whether the answer can be names alone
};

std::span<const Question> questionTable();

// Whether the first argument, but for the options of tasks, asks something, be it for help: then a task that follows is
// not done.
bool beginsWithQuestion(const std::vector<std::string>& arguments);
// Whether it asks what a task would do.
bool beginsWithPreview(const std::vector<std::string>& arguments);
// Which task it asks that about; null where it does not, or names none.
const TaskCommand* previewedCommand(const std::vector<std::string>& arguments);

// Answers the first question of the table that is among the arguments; the exit code is 1, with a line on `errors`,
// when it is asked wrongly. None when they ask nothing. On the main thread.
std::optional<int> answerQuestion(const std::vector<std::string>& arguments, std::ostream& output, std::ostream& errors,
                                  const std::function<void(const std::string& sentence)>& found);

int listItems(const QuestionContext& context);
int listBackups(const QuestionContext& context);
int listReceipts(const QuestionContext& context);
int previewTask(const QuestionContext& context);
int compareBackup(const QuestionContext& context);
int verifyBackups(const QuestionContext& context);
int checkCatalog(const QuestionContext& context);
int checkSelf(const QuestionContext& context);

}  // namespace vantory
