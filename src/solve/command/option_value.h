#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace varno::solve {

/// The value of an option as a whole number between two limits. Throws UsageError, which names the
/// option, the limits and the value.
std::int64_t WholeNumber(const std::string& option, const std::string& value, std::int64_t least,
                         std::int64_t most);

/// The value of an option as a number of seconds > 0.
double Seconds(const std::string& option, const std::string& value);

/// What counts as blank around values, also before the end of a line.
inline constexpr std::string_view kBlanks = " \t\r";

/// A text without the blanks around it.
std::string_view Trimmed(std::string_view text);

/// The parts of a value between its commas, without the blanks around them. Commas inside of
/// parentheses or brackets separate nothing: "0,atan2(1,2)" has two parts. Throws UsageError where
/// a part is empty.
std::vector<std::string> SplitAtCommas(const std::string& option, std::string_view value);

/// The parts of a value between the separators that stand outside of parentheses and brackets,
/// without the blanks around them; parts may be empty.
std::vector<std::string> SplitOutside(std::string_view value, char separator);

}  // namespace varno::solve
