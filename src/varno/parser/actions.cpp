#include "varno/parser/actions.h"

#include <iostream>

#include "varno/core/global_data.h"
#include "varno/expr/algebraic.h"
#include "varno/expr/binary_operator.h"
#include "varno/expr/differential.h"
#include "varno/expr/equation.h"
#include "varno/expr/function.h"
#include "varno/expr/number.h"
#include "varno/parser/equation_table.h"
#include "varno/parser/scanner.h"
#include "varno/sys/assertion.h"

namespace varno {

namespace {

constexpr int kHighestDerivativeOrder = 10'000;

/// A step function has been read since the last equation was complete.
bool stepFunctionSeen = false;

/// Enters the variables y, y', ..., y with n - 1 apostrophes of an equation of order n. Each but
/// the last has the next one for its right-hand side.
void EnterDifferentialSystem(const std::string& name, int order, const Expr::Ref& rightHandSide)
{
  Assert(order > 0, "yyvsp[-4].I > 0", {"grammar", __LINE__, __func__});
  Expr::Ref derivative = rightHandSide;
  for (int k = order - 1; k >= 0; --k) {
    const Expr::Ref variable(new Differential(DerivativeName(name, k), derivative));
    if (k == order - 1 && stepFunctionSeen) VariableOf(variable).MarkStepFunction();
    EnterEquation(variable);
    derivative = variable;
  }
}

}  // namespace

void AddEquation(const std::string& name, int order, const Expr::Ref& rightHandSide,
                 const std::optional<Mpf>& initialValue)
{
  if (order == 0) {
    const Expr::Ref variable(new Algebraic(name, rightHandSide));
    if (stepFunctionSeen) VariableOf(variable).MarkStepFunction();
    EnterEquation(variable);
  } else {
    EnterDifferentialSystem(name, order, rightHandSide);
  }
  stepFunctionSeen = false;
  if (initialValue) EnterStartValue(name, *initialValue);
}

void AddStartValue(const std::string& name, int order, const Mpf& start)
{
  EnterStartValue(DerivativeName(name, order), start);
}

void CheckStartPoint(const Mpf& point)
{
  if (point.Sign() != 0) {
    yyerror("Start condition must be defined for zero, not for other value");
  }
}

bool CheckDerivativeOrder(int order)
{
  if (order <= kHighestDerivativeOrder) return true;
  yyerror("derivative order too large");
  return false;
}

Expr::Ref Reference(const std::string& name, int order)
{
  return Expr::Ref(new Equation(name, order));
}

Expr::Ref Constant(const Mpf& number)
{
  return Expr::Ref(new Number(number));
}

Mpf Pi()
{
  return Expr::Global->_PI;
}

Mpf Negated(const Mpf& a)
{
  Mpf result;
  mpf_neg(result, a);
  return result;
}

Mpf Combined(ExprType operation, const Mpf& a, const Mpf& b)
{
  Mpf result;
  FindBinaryOperator(operation)->apply(result, a, b);
  return result;
}

Mpf Evaluated(ExprType function, const Mpf& a)
{
  Mpf result(a);
  FindElementaryFunction(function)->evaluate(result, result);
  return result;
}

Expr::Ref StepFunction(std::string_view word)
{
  ReportStepPart(word);
  stepFunctionSeen = true;
  return Expr::Ref();
}

void ReportStepPart(std::string_view word)
{
  std::clog << word << std::flush;
}

void ForgetStepFunctions()
{
  stepFunctionSeen = false;
}

const char* ParserMessage(std::string_view generated)
{
  return generated == "memory exhausted" ? "parser stack overflow" : "parse error";
}

}  // namespace varno
