#pragma once

#include <iosfwd>
#include <span>
#include <string>

namespace varno {

/// A command-line option that takes an argument, and its entry in the usage text.
struct Option {
  char letter;
  void (*apply)(const char* argument);
  /// The entry up to the current value.
  const char* usage;
  /// Writes the current value; null where the entry has none and ends with its text.
  void (*show)(std::ostream& out);
  /// What follows the value.
  const char* closing = ")";
};

/// The options in the order of the usage text.
std::span<const Option> Options();

/// The option of a letter; null when there is none.
const Option* FindOption(int letter);

/// The option string of getopt, with -h and -v, which take no argument.
std::string OptionString();

}  // namespace varno
