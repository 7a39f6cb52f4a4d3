#pragma once

#include <memory>
#include <optional>
#include <string_view>
#include <vector>

#include "solve/command/command_line.h"
#include "solve/command/event_output.h"
#include "solve/command/held_text.h"
#include "solve/command/output_file.h"
#include "solve/library/solve.h"
#include "solve/rows/row_writer.h"

namespace varno::solve {

/// Brings rows in the chosen format into a file, with --hold not before Finish; and events into
/// another one if one is given.
///
/// What stands before the rows is written with the first of them: a run that fails at its start
/// leaves no header alone.
class RowOutput {
 public:
  RowOutput(OutputFile file, const CommandLine& commandLine, const Solution& solution);
  RowOutput(const RowOutput&) = delete;
  RowOutput& operator=(const RowOutput&) = delete;

  /// Throws what OutputFile::Write does; an OutputError names the row.
  void Print(const Row& row);
  /// Writes what was held and closes the file. Throws what OutputFile does.
  void Finish();
  bool GoesToTerminal() const { return file.IsTerminal(); }

 private:
  OutputFile file;
  HeldText held;
  std::unique_ptr<RowWriter> writer;
  std::optional<EventOutput> events;
  bool hasBegun = false;
  std::vector<std::string_view> values;
};

}  // namespace varno::solve
