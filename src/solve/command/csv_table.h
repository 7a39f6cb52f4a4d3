#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace varno::solve {

/// A line of comma-separated values.
struct CsvRecord {
  int line;  ///< its number in the text, from 1
  std::vector<std::string> fields;
};

/// Reads comma-separated values as RFC 4180 describes them, with either end of line: fields without
/// the blanks around them, or quoted; lines without anything in them are left out. Throws
/// UsageError with the line, named by `name`, where a quote is not closed.
std::vector<CsvRecord> ReadCsv(std::string_view text, const std::string& name);

}  // namespace varno::solve
