#include "solve/command/option_value.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <limits>

#include "solve/command/usage_error.h"

namespace varno::solve {

namespace {

/// Reads all of a text as a number; false when it is none.
template <typename Number>
bool ReadAll(const std::string& text, Number& number)
{
  const char* const end = text.data() + text.size();
  const auto [rest, error] = std::from_chars(text.data(), end, number);
  return error == std::errc() && rest == end;
}

}  // namespace

std::string_view Trimmed(std::string_view text)
{
  const std::size_t first = text.find_first_not_of(kBlanks);
  if (first == std::string_view::npos) return {};
  return text.substr(first, text.find_last_not_of(kBlanks) + 1 - first);
}

std::int64_t WholeNumber(const std::string& option, const std::string& value, std::int64_t least,
                         std::int64_t most)
{
  std::int64_t number = 0;
  if (!ReadAll(value, number) || number < least || number > most) {
    std::string expected = "a whole number from " + std::to_string(least);
    expected +=
        most == std::numeric_limits<std::int64_t>::max() ? " on" : " to " + std::to_string(most);
    throw UsageError(option + " takes " + expected + ", not '" + value + "'");
  }
  return number;
}

double Seconds(const std::string& option, const std::string& value)
{
  double seconds = 0;
  if (!ReadAll(value, seconds) || !std::isfinite(seconds) || seconds <= 0) {
    throw UsageError(option + " takes a number of seconds greater than 0, not '" + value + "'");
  }
  return seconds;
}

std::vector<std::string> SplitOutside(std::string_view value, char separator)
{
  std::vector<std::string> parts;
  std::size_t begin = 0;
  int depth = 0;
  for (std::size_t i = 0; i <= value.size(); ++i) {
    const char character = i < value.size() ? value[i] : separator;
    if (character == '(' || character == '[') ++depth;
    if (character == ')' || character == ']') --depth;
    if (character != separator || (depth > 0 && i < value.size())) continue;
    parts.emplace_back(Trimmed(value.substr(begin, i - begin)));
    begin = i + 1;
  }
  return parts;
}

std::vector<std::string> SplitAtCommas(const std::string& option, std::string_view value)
{
  std::vector<std::string> parts = SplitOutside(value, ',');
  if (std::ranges::find(parts, "") == parts.end()) return parts;
  throw UsageError(option + " takes values with a comma between them, not '" + std::string(value) +
                   "'");
}

}  // namespace varno::solve
