#pragma once

#include <cstdint>

#include "solve/language/syntax.h"
#include "solve/source/diagnostics.h"
#include "solve/source/sources.h"

namespace varno::solve {

/// Reads a problem: the statements of a text. Reports every mistake; what could be read is in the
/// tree.
Syntax ParseProblem(const Sources& sources, std::uint32_t source, Diagnostics& diagnostics);

/// Reads "name = expression" or "y'(point) = expression" into `settings` or `starts` of a tree.
void ParseSetting(const Sources& sources, std::uint32_t source, Syntax& syntax,
                  Diagnostics& diagnostics);

/// Reads an expression alone, into `expression` of the tree.
Syntax ParseExpression(const Sources& sources, std::uint32_t source, Diagnostics& diagnostics);

}  // namespace varno::solve
