#include "solve/rows/csv_writer.h"

#include <utility>

namespace varno::solve {

namespace {

void AppendField(std::string& line, std::string_view field)
{
  if (field.find_first_of(" ,\"\r\n") == std::string_view::npos) {
    line += field;
    return;
  }
  line += '"';
  for (const char character : field) {
    if (character == '"') line += '"';
    line += character;
  }
  line += '"';
}

}  // namespace

CsvWriter::CsvWriter(TextSink& sink, std::vector<std::string> columns)
    : sink(sink), columns(std::move(columns))
{}

void CsvWriter::Begin()
{
  line = "t";
  for (const std::string& column : columns) {
    line += ',';
    AppendField(line, column);
  }
  line += '\n';
  sink.Write(line);
}

void CsvWriter::Write(std::string_view time, std::span<const std::string_view> values)
{
  line = time;
  for (const std::string_view value : values) {
    line += ',';
    line += value;
  }
  line += '\n';
  sink.Write(line);
}

}  // namespace varno::solve
