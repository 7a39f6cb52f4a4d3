#pragma once

#include <span>
#include <string>

#include "solve/language/token.h"
#include "solve/source/sources.h"

namespace varno::solve {

class TokenStream;

struct SyntaxError {
  Place place;
  std::string message;
  std::string hint;
};

/// What to say of the token that the grammar took last and has no rule for: what it is, what could
/// stand there instead, and how to write what was probably meant.
SyntaxError DescribeSyntaxError(const TokenStream& tokens,
                                std::span<const Grammar::symbol_kind_type> expected,
                                const Sources& sources);

}  // namespace varno::solve
