#pragma once

#include <memory>

#include "solve/command/command_line.h"
#include "solve/library/solve.h"
#include "solve/rows/row_writer.h"
#include "solve/rows/text_sink.h"

namespace varno::solve {

/// What writes the rows of a solution in the format that the command line asks for. Tables have no
/// leading fields.
std::unique_ptr<RowWriter> MakeRowWriter(TextSink& sink, const CommandLine& commandLine,
                                         const Solution& solution, LeadingFields leading = {});

}  // namespace varno::solve
