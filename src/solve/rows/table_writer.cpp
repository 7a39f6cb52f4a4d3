#include "solve/rows/table_writer.h"

#include <utility>

#include "solve/rows/number_format.h"

namespace varno::solve {

namespace {

constexpr std::string_view kSeparator = "  ";

void FillUp(std::string& line, std::size_t length)
{
  if (line.size() < length) line.append(length - line.size(), ' ');
}

}  // namespace

TableWriter::TableWriter(TextSink& sink, std::vector<std::string> columns, int timeWidth,
                         int digits)
    : sink(sink),
      columns(std::move(columns)),
      timeWidth(static_cast<std::size_t>(timeWidth)),
      valueWidth(static_cast<std::size_t>(NumberFormat::Width(digits)))
{}

void TableWriter::Begin()
{
  line = "# t";
  for (const std::string& column : columns) line.append(kSeparator).append(column);
  line += '\n';
  sink.Write(line);
}

void TableWriter::Write(std::string_view time, std::span<const std::string_view> values)
{
  line = time;
  std::size_t fieldEnd = timeWidth;
  for (const std::string_view value : values) {
    FillUp(line, fieldEnd);
    line += kSeparator;
    fieldEnd = line.size() + valueWidth;
    if (!value.starts_with('-')) line += ' ';
    line += value;
  }
  line += '\n';
  sink.Write(line);
}

void TableWriter::WriteEvent(std::string_view name, std::string_view time,
                             std::span<const std::string_view> values)
{
  line.assign("# event ").append(name).append(kSeparator).append(time);
  for (const std::string_view value : values) line.append(kSeparator).append(value);
  line += '\n';
  sink.Write(line);
}

void TableWriter::WritePeriod(std::string_view variable, std::string_view period)
{
  line.assign("# period of ").append(variable).append(kSeparator).append(period).append("\n");
  sink.Write(line);
}

}  // namespace varno::solve
