#include "solve/command/row_writers.h"

#include <string_view>
#include <utility>
#include <vector>

#include "solve/rows/csv_writer.h"
#include "solve/rows/json_writer.h"
#include "solve/rows/table_writer.h"

namespace varno::solve {

std::unique_ptr<RowWriter> MakeRowWriter(TextSink& sink, const CommandLine& commandLine,
                                         const Solution& solution, LeadingFields leading)
{
  switch (commandLine.format) {
    case Format::kCsv:
      return std::make_unique<CsvWriter>(sink, solution.Columns(), std::move(leading));
    case Format::kJson:
      return std::make_unique<JsonWriter>(sink, solution.Columns(), leading);
    case Format::kTable:
      break;
  }
  return std::make_unique<TableWriter>(sink, solution.Columns(), solution.TimeWidth(),
                                       commandLine.options.digits);
}

void WriteRow(RowWriter& writer, const Row& row, const std::optional<std::string>& periodOf)
{
  if (!row.period.empty()) return writer.WritePeriod(periodOf.value(), row.period);
  std::vector<std::string_view> values;
  values.reserve(row.values.size());
  for (const Value& value : row.values) values.emplace_back(value.Text());
  if (row.event.empty()) {
    writer.Write(row.time.Text(), values);
  } else {
    writer.WriteEvent(row.event, row.time.Text(), values);
  }
}

}  // namespace varno::solve
