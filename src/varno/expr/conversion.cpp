#include "varno/expr/conversion.h"

#include <string>

#include "varno/core/global_data.h"
#include "varno/expr/differential.h"
#include "varno/expr/number.h"
#include "varno/functions/functions.h"
#include "varno/sys/messages.h"

namespace varno {

namespace {

using Ref = Expr::Ref;
using Variables = std::vector<Ref>;

// --- Initial values beside those of the functions themselves ---

void NegativeSine(mpf_t& out, mpf_ptr u0)
{
  functions::sin(out, u0);
  mpf_neg(out, out);
}

void SquareRoot(mpf_t& out, mpf_ptr u0)
{
  mpf_sqrt(out, u0);
}

/// 2 u, as u + u
void Twice(mpf_t& out, mpf_ptr u0)
{
  mpf_add(out, u0, u0);
}

void MinusTwice(mpf_t& out, mpf_ptr u0)
{
  mpf_add(out, u0, u0);
  mpf_neg(out, out);
}

void OnePlusSquare(mpf_t& out, mpf_ptr u0)
{
  mpf_mul(out, u0, u0);
  mpf_add(out, Expr::Global->_ONE, out);
}

void OneMinusSquare(mpf_t& out, mpf_ptr u0)
{
  mpf_mul(out, u0, u0);
  mpf_sub(out, Expr::Global->_ONE, out);
}

/// sqrt(1 - u^2)
void CosineOfArcSine(mpf_t& out, mpf_ptr u0)
{
  OneMinusSquare(out, u0);
  mpf_sqrt(out, out);
}

// --- Right-hand sides; du is u' ---

void Set(const Ref& variable, Ref rightHandSide)
{
  VariableOf(variable).SetRightHandSide(std::move(rightHandSide));
}

// sin: s' = k u', k' = -s u'. cos: k' = m u', m' = -k u', with m = -sin u
void CircularPair(const Variables& v, const Ref&, const Ref& du)
{
  Set(v[1], Ref(kMultiply, Ref(kUnMinus, v[0]), du));
  Set(v[0], Ref(kMultiply, v[1], du));
}

// sinh: s' = k u', k' = s u'. cosh: k' = s u', s' = k u'
void HyperbolicPair(const Variables& v, const Ref&, const Ref& du)
{
  Set(v[1], Ref(kMultiply, v[0], du));
  Set(v[0], Ref(kMultiply, v[1], du));
}

/// y y u'
Ref SquareTimes(const Ref& y, const Ref& du)
{
  return Ref(kMultiply, Ref(kMultiply, y, y), du);
}

// tan: t' = u' + t t u'
void Tangent(const Variables& v, const Ref&, const Ref& du)
{
  Set(v[0], Ref(kPlus, du, SquareTimes(v[0], du)));
}

// cotan: y' = -(u' + y y u')
void Cotangent(const Variables& v, const Ref&, const Ref& du)
{
  Set(v[0], Ref(kUnMinus, Ref(kPlus, du, SquareTimes(v[0], du))));
}

// tanh and cotanh: y' = u' - y y u'
void HyperbolicTangent(const Variables& v, const Ref&, const Ref& du)
{
  Set(v[0], Ref(kMinus, du, SquareTimes(v[0], du)));
}

// asin: a' = u' / w, w' = -u a', with w = sqrt(1 - u^2); both share the node of the quotient
void ArcSine(const Variables& v, const Ref& u, const Ref& du)
{
  const Ref quotient(kDivide, du, v[1]);
  Set(v[0], quotient);
  Set(v[1], Ref(kMultiply, Ref(kUnMinus, u), quotient));
}

/// p' = factor u', q' = p u', a' = numerator / q: q holds 1 +- u^2 and p its derivative by u
void ArcTangentSystem(const Variables& v, const Ref& du, const char* factor, const Ref& numerator)
{
  Set(v[0], Ref(kMultiply, du, Ref(new Number(factor))));
  Set(v[1], Ref(kMultiply, v[0], du));
  Set(v[2], Ref(kDivide, numerator, v[1]));
}

// atan: a' = u' / (1 + u^2)
void ArcTangent(const Variables& v, const Ref&, const Ref& du)
{
  ArcTangentSystem(v, du, "2", du);
}

// acotan: a' = -u' / (1 + u^2)
void ArcCotangent(const Variables& v, const Ref&, const Ref& du)
{
  ArcTangentSystem(v, du, "2", Ref(kUnMinus, du));
}

// atanh and acotanh: a' = u' / (1 - u^2)
void HyperbolicArcTangent(const Variables& v, const Ref&, const Ref& du)
{
  ArcTangentSystem(v, du, "-2", du);
}

// sqrt: s' = (u' / s) 0.5
void Root(const Variables& v, const Ref&, const Ref& du)
{
  Set(v[0], Ref(kMultiply, Ref(kDivide, du, v[0]), Ref(new Number("0.5"))));
}

// exp: e' = u' e
void Exponential(const Variables& v, const Ref&, const Ref& du)
{
  Set(v[0], Ref(kMultiply, du, v[0]));
}

// ln: l' = u' / l. On purpose the divisor is the new variable, not the argument.
void Logarithm(const Variables& v, const Ref&, const Ref& du)
{
  Set(v[0], Ref(kDivide, du, v[0]));
}

const std::vector<Conversion>& Conversions()
{
  static const std::vector<Conversion> conversions = {
      {kSin, {functions::sin, functions::cos}, CircularPair},
      {kCos, {functions::cos, NegativeSine}, CircularPair},
      {kTan, {functions::tan}, Tangent},
      {kCotan, {functions::cotan}, Cotangent},
      {kASin, {functions::asin, CosineOfArcSine}, ArcSine},
      {kATan, {Twice, OnePlusSquare, functions::atan}, ArcTangent, 2},
      {kACotan, {Twice, OnePlusSquare, functions::acotan}, ArcCotangent, 2},
      {kSinh, {functions::sinh, functions::cosh}, HyperbolicPair},
      {kCosh, {functions::cosh, functions::sinh}, HyperbolicPair},
      {kTanh, {functions::tanh}, HyperbolicTangent},
      {kCotanh, {functions::cotanh}, HyperbolicTangent},
      {kATanh, {MinusTwice, OneMinusSquare, functions::atanh}, HyperbolicArcTangent, 2},
      {kACotanh, {MinusTwice, OneMinusSquare, functions::acotanh}, HyperbolicArcTangent, 2},
      {kSqrt, {SquareRoot}, Root},
      {kExp, {functions::exp}, Exponential},
      {kLn, {functions::ln}, Logarithm},
  };
  return conversions;
}

}  // namespace

const Conversion& ConversionOf(ExprType type)
{
  for (const Conversion& conversion : Conversions()) {
    if (conversion.type == type) return conversion;
  }
  switch (type) {
    case kACos:
      Fail("ACos::ConvertExpr() is not implemented");
    case kASinh:
      Fail("ASinh::ConvertExpr() is not implemented");
    default:
      Fail("ACosh::ConvertExpr() is not implemented");
  }
}

Expr::Ref MakeTemporaryVariable(mpf_srcptr initialValue)
{
  const std::string name = '%' + std::to_string(Expr::Global->_TEMPCOUNT++);
  Ref variable(new Differential(name, Ref()));
  VariableOf(variable).SetStartValue(initialValue);
  return variable;
}

void EnterTemporaryVariable(const Expr::Ref& variable)
{
  Expr::Global->_EQUATIONS.emplace(VariableOf(variable).Name(), variable);
}

}  // namespace varno
