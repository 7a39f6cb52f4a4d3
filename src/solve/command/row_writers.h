#pragma once

#include <memory>
#include <optional>
#include <string>

#include "solve/command/command_line.h"
#include "solve/library/solve.h"
#include "solve/rows/row_writer.h"
#include "solve/rows/text_sink.h"

namespace varno::solve {

/// What writes the rows of a solution in the format that the command line asks for. Tables have no
/// leading fields.
std::unique_ptr<RowWriter> MakeRowWriter(TextSink& sink, const CommandLine& commandLine,
                                         const Solution& solution, LeadingFields leading = {});

/// Writes a row, an event or a period, whichever it is. `periodOf`: the variable of --period.
void WriteRow(RowWriter& writer, const Row& row, const std::optional<std::string>& periodOf);

}  // namespace varno::solve
