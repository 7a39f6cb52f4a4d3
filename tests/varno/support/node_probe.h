#pragma once

#include <string>

#include "arith/mpf.h"
#include "varno/core/expr.h"

namespace varno {

using arith::Mpf;

// Short ways to build nodes, to ask them something and to step as the integration loop does.

/// A constant.
Expr::Ref Constant(double constant);

/// A differential variable with a start value, entered into the equation table: variables that
/// refer to one another are then taken apart with the record.
Expr::Ref MakeVariable(const std::string& name, double start,
                       const Expr::Ref& rightHandSide = Expr::Ref());

Mpf TermOf(const Expr::Ref& node, int k);
Mpf ValueOf(const Expr::Ref& node);
Mpf InitValueOf(const Expr::Ref& node);
std::string TextOf(const Expr::Ref& node);

/// Begins the next step from the values at the end of this one.
void AcceptStep();
/// Begins the same step again, from the same start values.
void RejectStep();

}  // namespace varno
