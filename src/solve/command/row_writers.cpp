#include "solve/command/row_writers.h"

#include <utility>

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

}  // namespace varno::solve
