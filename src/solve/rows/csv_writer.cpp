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

CsvWriter::CsvWriter(TextSink& sink, std::vector<std::string> columns, LeadingFields leading)
    : sink(sink), columns(std::move(columns)), leading(std::move(leading))
{}

void CsvWriter::Begin()
{
  line.clear();
  for (const std::string& name : leading.names) {
    AppendField(line, name);
    line += ',';
  }
  line += 't';
  for (const std::string& column : columns) {
    line += ',';
    AppendField(line, column);
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
