#include "solve/command/row_output.h"

#include <utility>

#include "solve/rows/csv_writer.h"
#include "solve/rows/json_writer.h"
#include "solve/rows/table_writer.h"

namespace varno::solve {

namespace {

std::unique_ptr<RowWriter> MakeWriter(TextSink& sink, const CommandLine& commandLine,
                                      const Solution& solution)
{
  switch (commandLine.format) {
    case Format::kCsv:
      return std::make_unique<CsvWriter>(sink, solution.Columns());
    case Format::kJson:
      return std::make_unique<JsonWriter>(sink, solution.Columns());
    case Format::kTable:
      break;
  }
  return std::make_unique<TableWriter>(sink, solution.Columns(), solution.TimeWidth(),
                                       commandLine.options.digits);
}

}  // namespace

RowOutput::RowOutput(OutputFile file, const CommandLine& commandLine, const Solution& solution)
    : file(std::move(file)),
      writer(MakeWriter(commandLine.hold ? static_cast<TextSink&>(held) : this->file, commandLine,
                        solution))
{}

void RowOutput::Print(const Row& row)
{
  values.clear();
  for (const Value& value : row.values) values.emplace_back(value.Text());
  try {
    if (!hasBegun) writer->Begin();
    hasBegun = true;
    writer->Write(row.time.Text(), values);
  } catch (const OutputError& error) {
    throw OutputError(error.what() + std::string("; lost from the row t = ") + row.time.Text() +
                      " on");
  }
}

void RowOutput::Finish()
{
  file.Write(held.text);
  file.Close();
}

}  // namespace varno::solve
