#pragma once

#include <string>

#include "arith/mpf.h"
#include "varno/core/expr.h"

namespace varno {

using arith::Mpf;

/// The name of a derivative: that of the variable with an apostrophe for each order.
std::string DerivativeName(const std::string& name, int order);

/// Enters a variable under its name. The last one of a name wins.
void EnterEquation(const Expr::Ref& variable);

/// Notes the value of a variable at time 0. The last one of a name wins.
void EnterStartValue(const std::string& name, const Mpf& start);

/// Gives every variable its noted start value. To be called after the parse: functions of variables
/// that stand later in the table then see the right values during conversion.
void ApplyStartValues();

}  // namespace varno
