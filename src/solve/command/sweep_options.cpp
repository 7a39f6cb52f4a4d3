#include "solve/command/sweep_options.h"

#include <string>
#include <utility>
#include <vector>

#include "solve/command/csv_table.h"
#include "solve/command/input_file.h"
#include "solve/command/option_value.h"
#include "solve/command/usage_error.h"

namespace varno::solve {

namespace {

/// Reads the axes of a sweep, and watches that no name is swept twice, or set as well.
class SweepReader {
 public:
  SweepReader(const Problem& problem, const CommandLine& commandLine)
      : problem(problem), settings(commandLine.settings), digits(commandLine.options.digits)
  {}

  void AddOption(const std::string& text);
  void AddFile(const InputFile& file);
  std::vector<SweepAxis> Axes() && { return std::move(axes); }

 private:
  void RequireNew(const std::string& name);

  const Problem& problem;
  const std::vector<std::string>& settings;
  int digits;
  std::vector<std::string> names;
  std::vector<SweepAxis> axes;
};

/// What stands before the '=' of a setting, without blanks.
std::string NameOf(const std::string& setting)
{
  std::string name = setting.substr(0, setting.find('='));
  std::erase_if(name, [](char c) { return c == ' ' || c == '\t'; });
  return name;
}

void SweepReader::RequireNew(const std::string& name)
{
  for (const std::string& other : names) {
    if (other == name) throw UsageError("'" + name + "' is swept twice");
  }
  for (const std::string& setting : settings) {
    if (NameOf(setting) == NameOf(name))
      throw UsageError("'" + name + "' is swept and set: --sweep and --set both give it values");
  }
  names.push_back(name);
  // The error of a setting says what is wrong with the name.
  if (!problem.HasParameter(name)) problem.With({name + "=1"}, "--sweep");
}

/// "mu=1,2,5" or "mu=0:10:1/2"
void SweepReader::AddOption(const std::string& text)
{
  const auto equals = text.find('=');
  const std::string usage = "--sweep takes NAME=VALUE,VALUE,... or NAME=FIRST:LAST:STEP, not '";
  if (equals == std::string::npos || equals == 0) throw UsageError(usage + text + "'");
  const std::string name = SplitOutside(text.substr(0, equals), ',').front();
  const std::string values = text.substr(equals + 1);
  RequireNew(name);

  const std::vector<std::string> range = SplitOutside(values, ':');
  if (range.size() == 1) {
    axes.push_back({{name, SweptValues::List(SplitAtCommas("--sweep", values), digits)}});
    return;
  }
  if (range.size() != 3) throw UsageError(usage + text + "'");
  axes.push_back({{name, SweptValues::Range(range[0], range[1], range[2], digits)}});
}

/// A line of names, then a line of values for each run
void SweepReader::AddFile(const InputFile& file)
{
  const std::vector<CsvRecord> records = ReadCsv(file.text, file.name);
  if (records.size() < 2)
    throw UsageError(file.name + ": a line of names and at least one of values are wanted");

  const std::vector<std::string>& header = records.front().fields;
  std::vector<std::vector<std::string>> columns(header.size());
  for (std::size_t i = 1; i < records.size(); ++i) {
    const auto& fields = records[i].fields;
    if (fields.size() != header.size()) {
      throw UsageError(file.name + ":" + std::to_string(records[i].line) + ": " +
                       std::to_string(header.size()) + " values are wanted, not " +
                       std::to_string(fields.size()));
    }
    for (std::size_t j = 0; j < fields.size(); ++j) columns[j].push_back(fields[j]);
  }
  SweepAxis& axis = axes.emplace_back();
  for (std::size_t j = 0; j < header.size(); ++j) {
    RequireNew(header[j]);
    axis.push_back({header[j], SweptValues::List(columns[j], digits)});
  }
}

}  // namespace

Sweep ReadSweep(const CommandLine& commandLine, const std::vector<InputFile>& files,
                const Problem& problem)
{
  SweepReader reader(problem, commandLine);
  for (const std::string& text : commandLine.sweeps) reader.AddOption(text);
  for (const InputFile& file : files) reader.AddFile(file);
  return Sweep(std::move(reader).Axes());
}

}  // namespace varno::solve
