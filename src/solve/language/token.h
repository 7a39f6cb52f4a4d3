#pragma once

#include <cstdint>

#include "solve/language/grammar.h"  // generated
#include "solve/source/place.h"

namespace varno::solve {

using TokenKind = Grammar::token_kind_type;

struct Token {
  TokenKind kind;
  Place place;
  std::uint32_t order = 0;  ///< of a derivative mark
};

}  // namespace varno::solve
