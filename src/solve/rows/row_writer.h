#pragma once

#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace varno::solve {

/// Fields that stand in front of each row of a run and are the same in all of them, such as the
/// values that a sweep has given to parameters.
struct LeadingFields {
  std::vector<std::string> names, texts;
};

/// Writes rows in one format. A row reaches the sink in one piece, with its line end.
class RowWriter {
 public:
  virtual ~RowWriter() = default;
  /// What stands before the first row, if anything does.
  virtual void Begin() = 0;
  /// A row: the text of its time, and of each of its values in the order of the columns.
  virtual void Write(std::string_view time, std::span<const std::string_view> values) = 0;
  /// An event in its place between rows, where the format has room for one.
  virtual void WriteEvent(std::string_view name, std::string_view time,
                          std::span<const std::string_view> values) = 0;
  /// The period of a variable, where the format has room for it.
  virtual void WritePeriod(std::string_view variable, std::string_view period) = 0;
};

}  // namespace varno::solve
