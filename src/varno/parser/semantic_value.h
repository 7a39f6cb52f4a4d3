#pragma once

#include <optional>
#include <string>

#include "arith/mpf.h"
#include "varno/core/expr.h"

namespace varno {

using arith::Mpf;

/// The value of a grammar symbol; each symbol uses one member. The values own what they hold and go
/// with the parser's stack, however the parse ends.
struct SemanticValue {
  int order = 0;                 ///< derivative order
  ExprType function = kNothing;  ///< kind of an elementary function
  std::optional<Mpf> number;     ///< constant; absent where an initial value is left out
  std::string text;              ///< name
  Expr::Ref expr;
};

/// The depth of the parser's stack in symbols.
inline constexpr int kParserStackDepth = 10240;

}  // namespace varno
