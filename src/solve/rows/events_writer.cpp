#include "solve/rows/events_writer.h"

#include <utility>

#include "solve/rows/csv_field.h"

namespace varno::solve {

EventsWriter::EventsWriter(TextSink& sink, std::vector<std::string> columns, LeadingFields leading)
    : sink(sink), columns(std::move(columns)), leading(std::move(leading))
{}

void EventsWriter::Begin()
{
  std::string line;
  for (const std::string& name : leading.names) {
    AppendCsvField(line, name);
    line += ',';
  }
  line += "event,t";
  for (const std::string& column : columns) {
    line += ',';
    AppendCsvField(line, column);
  }
  line += '\n';
  sink.Write(line);
}

void EventsWriter::WriteEvent(std::string_view name, std::string_view time,
                              std::span<const std::string_view> values)
{
  std::string line;
  for (const std::string& text : leading.texts) line.append(text).append(",");
  AppendCsvField(line, name);
  line.append(",").append(time);
  for (const std::string_view value : values) line.append(",").append(value);
  line += '\n';
  sink.Write(line);
}

}  // namespace varno::solve
