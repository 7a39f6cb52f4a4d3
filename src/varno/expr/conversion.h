#pragma once

#include <cstddef>
#include <vector>

#include "varno/core/expr.h"

namespace varno {

/// How an elementary function F(u) becomes a system of differential equations: temporary variables,
/// of which one equals F(u), with their values at the initial time and right-hand sides that use
/// only the four operations, unary minus and the derivative u' of the argument.
struct Conversion {
  using InitialValue = void (*)(mpf_t& out, mpf_ptr u0);
  /// Sets the right-hand sides of the variables.
  using Build = void (*)(const std::vector<Expr::Ref>& variables, const Expr::Ref& u,
                         const Expr::Ref& du);

  ExprType type;
  /// One for each variable, in the order in which the variables are made and numbered.
  std::vector<InitialValue> initialValues;
  Build build;
  /// The index of the variable that equals F(u).
  std::size_t returned = 0;
};

/// The conversion of a function kind. Ends the run with a message for those that have none.
const Conversion& ConversionOf(ExprType type);

/// A new variable named "%" and the next number, with the given value, not yet in the table.
Expr::Ref MakeTemporaryVariable(mpf_srcptr initialValue);

/// Enters a temporary variable into the equation table.
void EnterTemporaryVariable(const Expr::Ref& variable);

}  // namespace varno
