#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "arith/mpf.h"
#include "varno/core/expr.h"

namespace varno {

using arith::Mpf;

// What the rules of the grammar do.

/// Enters "name' = rightHandSide & initialValue" into the tables. Order 0 makes an algebraic
/// variable; an order n above 1 makes the system name' = name', ..., of n variables with the names
/// y, y', ..., the last of which has the right-hand side. An initial value belongs to y.
void AddEquation(const std::string& name, int order, const Expr::Ref& rightHandSide,
                 const std::optional<Mpf>& initialValue);

/// Enters "name'(0) = start".
void AddStartValue(const std::string& name, int order, const Mpf& start);

/// Reports a start point other than 0; the parse goes on.
void CheckStartPoint(const Mpf& point);

/// Whether the derivative order of an equation or a start statement is small enough for its
/// variables or its name to be built; reports it otherwise. A reference of any order means y
/// itself.
bool CheckDerivativeOrder(int order);

/// A reference to an equation, resolved by name after the parse.
Expr::Ref Reference(const std::string& name, int order);

Expr::Ref Constant(const Mpf& number);

// Constants are computed while they are read, at the precision in force.
Mpf Pi();
Mpf Negated(const Mpf& a);
Mpf Combined(ExprType operation, const Mpf& a, const Mpf& b);
Mpf Evaluated(ExprType function, const Mpf& a);

/// Step functions are accepted but build nothing: each reduction writes its word, without a line
/// end, and the equation is marked, for it has no value.
Expr::Ref StepFunction(std::string_view word);
void ReportStepPart(std::string_view word);
/// To be called before a parse: the one before may have failed behind a step function.
void ForgetStepFunctions();

/// The program's own words for a message of the generated parser.
const char* ParserMessage(std::string_view generated);

}  // namespace varno
