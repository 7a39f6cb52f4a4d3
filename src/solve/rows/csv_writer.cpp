#include "solve/rows/csv_writer.h"

#include <utility>

#include "solve/rows/csv_field.h"

namespace varno::solve {

CsvWriter::CsvWriter(TextSink& sink, std::vector<std::string> columns, LeadingFields leading)
    : sink(sink), columns(std::move(columns)), leading(std::move(leading))
{}

void CsvWriter::Begin()
{
  line.clear();
  for (const std::string& name : leading.names) {
    AppendCsvField(line, name);
    line += ',';
  }
  line += 't';
  for (const std::string& column : columns) {
    line += ',';
    AppendCsvField(line, column);
  }
  line += '\n';
  sink.Write(line);
}

void CsvWriter::Write(std::string_view time, std::span<const std::string_view> values)
{
  line.clear();
  for (const std::string& text : leading.texts) line.append(text).append(",");
  line += time;
  for (const std::string_view value : values) {
    line += ',';
    line += value;
  }
  line += '\n';
  sink.Write(line);
}

}  // namespace varno::solve
