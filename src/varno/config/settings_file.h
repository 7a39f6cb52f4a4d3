#pragma once

#include <string>

namespace varno {

/// What ParseSettingLine gives beside the index of a keyword.
enum SettingLine : int {
  kUnknownKeyword = 23,
  kNoValue = 24,
};

/// Reads "KEYWORD = VALUE" lines from .varnorc in the directory HOME, or in the current directory
/// when HOME is unset, and applies them. A file that cannot be opened is no error.
void ReadSettingsFile();

/// Takes a line apart that has neither comments nor outer blanks. Returns the index of its keyword
/// and sets the value text, or warns and returns kUnknownKeyword or kNoValue.
///
/// On purpose a value ends at the first character that is neither a letter nor a digit nor a sign:
/// 0.01 reads as 0, and ":=" leaves no value.
int ParseSettingLine(const std::string& line, std::string& value, int lineNumber);

/// Applies a keyword by its index in the keyword table and reports it. Does nothing for other
/// indices.
void ApplySetting(int index, const std::string& value);

}  // namespace varno
