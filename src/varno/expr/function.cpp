#include "varno/expr/function.h"

#include <iterator>
#include <ostream>
#include <utility>

#include "varno/core/global_data.h"
#include "varno/expr/conversion.h"
#include "varno/functions/functions.h"
#include "varno/sys/number_checks.h"
#include "varno/sys/stack_guard.h"

namespace varno {

namespace {

template <class Node>
Expr* MakeNode(const Expr::Ref& operand)
{
  return new Node(operand);
}

void SquareRoot(mpf_t& result, mpf_ptr x)
{
  mpf_sqrt(result, x);
}

void Truncate(mpf_t& result, mpf_ptr x)
{
  mpf_trunc(result, x);
}

/// In the order of the kinds, from kSin to kTrunc.
constexpr ElementaryFunction kFunctions[] = {
    {kSin, "sin", functions::sin, MakeNode<Sin>},
    {kCos, "cos", functions::cos, MakeNode<Cos>},
    {kTan, "tan", functions::tan, MakeNode<Tan>},
    {kCotan, "cotan", functions::cotan, MakeNode<Cotan>},
    {kASin, "asin", functions::asin, MakeNode<ASin>},
    {kACos, "acos", functions::acos, MakeNode<ACos>},
    {kATan, "atan", functions::atan, MakeNode<ATan>},
    {kACotan, "acotan", functions::acotan, MakeNode<ACotan>},
    {kSinh, "sinh", functions::sinh, MakeNode<Sinh>},
    {kCosh, "cosh", functions::cosh, MakeNode<Cosh>},
    {kTanh, "tanh", functions::tanh, MakeNode<Tanh>},
    {kCotanh, "cotanh", functions::cotanh, MakeNode<Cotanh>},
    {kASinh, "asinh", functions::asinh, MakeNode<ASinh>},
    {kACosh, "acosh", functions::acosh, MakeNode<ACosh>},
    {kATanh, "atanh", functions::atanh, MakeNode<ATanh>},
    {kACotanh, "acotanh", functions::acotanh, MakeNode<ACotanh>},
    {kSqrt, "sqrt", SquareRoot, MakeNode<Sqrt>},
    {kExp, "exp", functions::exp, MakeNode<Exp>},
    {kLn, "ln", functions::ln, MakeNode<Ln>},
    {kTrunc, "trunc", Truncate, MakeNode<Trunc>},
};
static_assert(std::size(kFunctions) == kTrunc - kSin + 1);

}  // namespace

const ElementaryFunction* FindElementaryFunction(ExprType type)
{
  if (type < kSin || type > kTrunc) return nullptr;
  return &kFunctions[type - kSin];
}

Function::Function(ExprType type, Ref a)
    : UnOp(type, std::move(a)), function(*FindElementaryFunction(type))
{}

// The nodes that work for a function are held by locals: their work may lead back to the function,
// which then replaces its operand.

void Function::GetInitValue(mpf_t& out)
{
  Ref u = operand;
  u = u->Convert();
  operand = u;
  u->InitValue(out);
  function.evaluate(out, out);
}

Expr::Ref Function::ConvertExpr()
{
  const Conversion& conversion = ConversionOf(Type());
  if (converting) {
    // The derivative of the argument leads back to this function, as in y' = sin(y): the variables
    // are made now, and the conversion under way will use them.
    Global->_SELFMET = true;
    CreateVariables();
    return variables[conversion.returned];
  }
  // Functions that lead to one another would otherwise make n! sets of variables.
  if (Global->_SELFMET && !variables.empty()) return variables[conversion.returned];
  variables.clear();
  converting = true;
  // On purpose asin converts its argument twice and takes the derivative as it stands.
  const bool isASin = Type() == kASin;
  Ref u = operand;
  u = u->ConvertExpr();
  if (isASin) u = u->Convert();
  operand = u;
  Ref du = u->Derivative();
  if (!isASin) du = du->Convert();
  CreateVariables();
  conversion.build(variables, u, du);
  for (const Ref& variable : variables) EnterTemporaryVariable(variable);
  converting = false;
  return variables[conversion.returned];
}

void Function::CreateVariables()
{
  if (!variables.empty()) return;
  Mpf u0;
  const Ref u = operand;
  u->InitValue(u0);
  const Conversion& conversion = ConversionOf(Type());
  std::vector<Mpf> initialValues(conversion.initialValues.size());
  for (std::size_t i = 0; i < initialValues.size(); ++i) {
    conversion.initialValues[i](initialValues[i], u0);
    RequireRange(initialValues[i]);
  }
  // Asking for the argument's initial value may have led back here, which made the variables.
  if (!variables.empty()) return;
  for (const Mpf& initialValue : initialValues) {
    variables.push_back(MakeTemporaryVariable(initialValue));
  }
}

void Function::Print(std::ostream& out) const
{
  CheckStack();
  out << function.name << '(';
  operand->Print(out);
  out << ')';
}

void Function::ReleaseReferences(std::vector<Ref>& released)
{
  UnOp::ReleaseReferences(released);
  for (Ref& variable : variables) released.push_back(std::move(variable));
}

void Sin::Result(mpf_t& out, bool)
{
  operand->Value(out);
  functions::sin(out, out);
}

void Sin::MakeDerivative()
{
  // The cosine is built directly: the operand is never a number here, and it is not folded.
  derivative = Ref(kMultiply, operand->Derivative(), Ref(new Cos(operand)));
}

void Trunc::Result(mpf_t& out, bool)
{
  operand->Value(out);
  mpf_trunc(out, out);
}

Expr::Ref Trunc::ConvertExpr()
{
  return Ref(kTrunc, operand->Convert());
}

}  // namespace varno
