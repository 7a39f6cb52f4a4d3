#pragma once

#include <utility>
#include <vector>

#include "varno/expr/un_op.h"

namespace varno {

/// What the program knows of an elementary function apart from its conversion.
struct ElementaryFunction {
  ExprType type;
  const char* name;
  /// Sets the result, which may be x, to the value of the function at x.
  void (*evaluate)(mpf_t& result, mpf_ptr x);
  Expr* (*makeNode)(const Expr::Ref& operand);
};

/// The row of a function kind; null for any other kind.
const ElementaryFunction* FindElementaryFunction(ExprType type);

/// An elementary function of an expression.
///
/// It can be evaluated, but it has no terms: before the integration ConvertExpr puts a variable in
/// its place whose differential equation has a polynomial right-hand side (conversion.h).
class Function : public UnOp {
 public:
  /// The function of the operand's initial value. On purpose the operand is converted first, which
  /// makes the temporary equations of functions inside it.
  void GetInitValue(mpf_t& out) override;
  /// Makes new variables at every call, until a function of the system meets itself in its own
  /// conversion: from then on a function that has variables answers with them.
  Ref ConvertExpr() override;
  void Print(std::ostream& out) const override;
  void ReleaseReferences(std::vector<Ref>& released) override;

 protected:
  Function(ExprType type, Ref a);

 private:
  void CreateVariables();

  const ElementaryFunction& function;
  /// The variables of the latest conversion, which may be under way, in order of creation.
  std::vector<Ref> variables;
  bool converting = false;
};

/// A function that adds nothing to what all functions share.
template <ExprType kType>
class PlainFunction final : public Function {
 public:
  explicit PlainFunction(Ref a) : Function(kType, std::move(a)) {}
};

/// The sine can be evaluated where it stands and has a symbolic derivative: an algebraic variable
/// whose own conversion is still to come may be asked for them.
class Sin final : public Function {
 public:
  explicit Sin(Ref a) : Function(kSin, std::move(a)) {}
  void Result(mpf_t& out, bool) override;
  void MakeDerivative() override;
};

using Cos = PlainFunction<kCos>;
using Tan = PlainFunction<kTan>;
using Cotan = PlainFunction<kCotan>;
using ASin = PlainFunction<kASin>;
using ACos = PlainFunction<kACos>;
using ATan = PlainFunction<kATan>;
using ACotan = PlainFunction<kACotan>;
using Sinh = PlainFunction<kSinh>;
using Cosh = PlainFunction<kCosh>;
using Tanh = PlainFunction<kTanh>;
using Cotanh = PlainFunction<kCotanh>;
using ASinh = PlainFunction<kASinh>;
using ACosh = PlainFunction<kACosh>;
using ATanh = PlainFunction<kATanh>;
using ACotanh = PlainFunction<kACotanh>;
using Sqrt = PlainFunction<kSqrt>;
using Exp = PlainFunction<kExp>;
using Ln = PlainFunction<kLn>;

/// Truncation toward zero. It stays where it stands: it has a value, so that an algebraic equation
/// may use it, but no terms, so that a differential equation may not.
class Trunc final : public Function {
 public:
  explicit Trunc(Ref a) : Function(kTrunc, std::move(a)) {}
  void Result(mpf_t& out, bool) override;
  Ref ConvertExpr() override;
};

}  // namespace varno
