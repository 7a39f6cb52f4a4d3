#pragma once

#include <optional>

#include "varno/core/expr.h"

namespace varno {

/// The expression that takes the place of a (operation) b, type 1 to 4, where no node needs to be
/// built for it: the number that two numbers give, and with `_SIMPLIFYSMALL` the shorter form of an
/// operation with a number near 0 or 1. Near means closer than `_ACCURACY`.
std::optional<Expr::Ref> Simplified(ExprType type, const Expr::Ref& a, const Expr::Ref& b);

}  // namespace varno
