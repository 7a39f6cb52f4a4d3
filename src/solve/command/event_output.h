#pragma once

#include <string_view>
#include <vector>

#include "solve/command/output_file.h"
#include "solve/library/solve.h"
#include "solve/rows/events_writer.h"

namespace varno::solve {

/// Brings the events among the rows of a run into a file of their own.
class EventOutput {
 public:
  EventOutput(OutputFile file, std::vector<std::string> columns)
      : file(std::move(file)), writer(this->file, std::move(columns))
  {
    writer.Begin();
  }
  EventOutput(const EventOutput&) = delete;
  EventOutput& operator=(const EventOutput&) = delete;

  /// Writes a row that is an event. Throws what OutputFile::Write does.
  void Print(const Row& row)
  {
    if (row.event.empty()) return;
    values.clear();
    for (const Value& value : row.values) values.emplace_back(value.Text());
    writer.WriteEvent(row.event, row.time.Text(), values);
  }
  void Close() { file.Close(); }

 private:
  OutputFile file;
  EventsWriter writer;
  std::vector<std::string_view> values;
};

}  // namespace varno::solve
