// Puts together what the steps of a check have come to.
#include "selfcheck/Check.h"

#include "platform/FileSystem.h"

namespace vantory {

namespace {

// Whether the error says that there is no such thing here, rather than that it went wrong.
bool meansNotHere(const Error& error) {
  return error.code == std::errc::operation_not_supported || error.code == std::errc::not_supported ||
         error.code == std::errc::function_not_supported ||
         error.code == std::errc::inappropriate_io_control_operation ||
         error.code == std::errc::no_such_device_or_address;  // of a desktop's session
}

}  // namespace

std::string Bench::put(std::string_view name, std::string_view bytes, Status& outcome) const {
  std::string file = path(name);
  outcome = platform.files.write(file, bytes, {});
  return file;
}

std::string Bench::contentOf(const std::string& path) const {
  const Result<std::string> bytes = platform.files.read(path);
  return bytes ? *bytes : "(cannot be read)";
}

bool Bench::isThere(const std::string& path) const {
  return platform.files.info(path, Links::DoNotFollow).ok();
}

void Trial::does(const Status& status) {
  if (status) return;
  const Error& error = status.error();
  std::string cause = error.text;
  // The folder is gone when somebody reads of it.
  if (const std::string here = bench_.folder + "/"; cause.starts_with(here)) cause.erase(0, here.size());
  if (!error.cure.empty()) cause += ". " + error.cure;
  note({meansNotHere(error) ? Outcome::NotTried : Outcome::NotHeld, std::move(cause)});
}

void Trial::refuses(const Status& status, std::errc reason, std::string_view otherwise) {
  if (status)
    note({Outcome::NotHeld, std::string(otherwise)});
  else if (status.error().code != reason)
    note({Outcome::NotHeld, "it is refused for another reason: " + status.error().text});
}

void Trial::sees(bool isSo, std::string_view otherwise) {
  if (!isSo) note({Outcome::NotHeld, std::string(otherwise)});
}

std::string Trial::put(std::string_view name, std::string_view bytes) {
  Status outcome;
  std::string file = bench_.put(name, bytes, outcome);
  does(outcome);
  return file;
}

Finding Trial::finding(std::string remark) const {
  return isGood() ? Finding{Outcome::Held, std::move(remark)} : finding_;
}

void Trial::note(Finding finding) {
  if (isGood()) finding_ = std::move(finding);
}

}  // namespace vantory
