// Fills in placeholders.
#include "base/Format.h"

#include <array>
#include <charconv>
#include <cstddef>

namespace vantory {

namespace {

// A placeholder as it stands in a format.
struct Directive {
  enum class Kind { None, Percent, Text, Integer, Decimal };

  Kind kind = Kind::None;
  std::size_t length = 1;  // characters, the percent sign included
  int decimals = 0;
};

// What the text, which begins with a percent sign, begins with; Kind::None where that is no placeholder here.
Directive directiveAt(std::string_view rest) {
  using Kind = Directive::Kind;
  if (rest.starts_with("%%")) return {Kind::Percent, 2};
  if (rest.starts_with("%@") || rest.starts_with("%s")) return {Kind::Text, 2};
  if (rest.starts_with("%i") || rest.starts_with("%d")) return {Kind::Integer, 2};
  if (rest.starts_with("%0.") && rest.size() >= 5 && rest[3] >= '0' && rest[3] <= '9' && rest[4] == 'f')
    return {Kind::Decimal, 5, rest[3] - '0'};
  return {};
}

// By std::to_chars(), which knows no locale and so writes a point everywhere.
template <class... Details>
std::string digits(Details... details) {
  std::array<char, 512> buffer;  // the largest double has 309 digits before the point
  const auto end = std::to_chars(buffer.data(), buffer.data() + buffer.size(), details...).ptr;
  return std::string(buffer.data(), end);
}

// The argument as text; a number in the manner that the directive asks for.
struct ArgumentText {
  Directive directive;

  std::string operator()(std::monostate) const { return "(null)"; }
  std::string operator()(std::string_view text) const { return std::string(text); }
  std::string operator()(double number) const {
    if (directive.kind == Directive::Kind::Text) return digits(number);
    return digits(number, std::chars_format::fixed, directive.decimals);
  }
  template <std::integral T>
  std::string operator()(T number) const {
    if (directive.kind == Directive::Kind::Decimal) return (*this)(static_cast<double>(number));
    return digits(number);
  }
};

}  // namespace

// Arguments go from left to right, whatever kind the placeholders ask for.
std::string formatText(std::string_view format, std::span<const FormatArgument> arguments) {
  std::string text;
  std::size_t used = 0;
  for (std::size_t i = 0; i < format.size();) {
    const Directive directive = format[i] == '%' ? directiveAt(format.substr(i)) : Directive{};
    // Of "%%" the first is copied and both are passed.
    if (directive.kind == Directive::Kind::None || directive.kind == Directive::Kind::Percent)
      text += format[i];
    else if (used < arguments.size())
      text += std::visit(ArgumentText{directive}, arguments[used++].value());
    else
      text += "(null)";
    i += directive.length;
  }
  return text;
}

std::string counted(std::size_t count, std::string_view thing) {
  return formatted(count == 1 ? "%i %@" : "%i %@s", count, thing);
}

}  // namespace vantory
