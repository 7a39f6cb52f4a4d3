#pragma once

#include <cstdint>
#include <vector>

#include "solve/language/token.h"
#include "solve/source/diagnostics.h"
#include "solve/source/sources.h"

namespace varno::solve {

/// The tokens of a text, without blank space and comments, and last the end. What begins no token
/// of the language becomes a token that no rule allows.
std::vector<Token> Scan(const Sources& sources, std::uint32_t source, Diagnostics& diagnostics);

}  // namespace varno::solve
