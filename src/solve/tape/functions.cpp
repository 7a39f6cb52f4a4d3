#include "solve/tape/functions.h"

#include <cassert>

namespace varno::solve {

namespace {

/// Makes the lines of one function; the members are what all formulas share.
struct FunctionLines {
  LineTable& lines;
  LinearArithmetic& arithmetic;
  NodeId id;

  /// constant + sign * line^2
  LineId PlusSquare(NodeId constant, NodeId sign, LineId line) const
  {
    LinearForm form = arithmetic.Single(lines.Product(line, line, id));
    form = arithmetic.Add(arithmetic.Constant(constant), arithmetic.Scale(form, sign));
    return lines.Materialise(form, id);
  }
  LineId OnePlusSquare(LineId u) const { return PlusSquare(arithmetic.One(), arithmetic.One(), u); }
  LineId OneMinusSquare(LineId u) const
  {
    return PlusSquare(arithmetic.One(), arithmetic.MinusOne(), u);
  }
  LineId SquareMinusOne(LineId u) const
  {
    return PlusSquare(arithmetic.MinusOne(), arithmetic.One(), u);
  }

  /// first' = second, second' = +- first. Both are made, whichever is asked for.
  LineId Pair(Operation first, Operation second, bool secondNegative, Operation wanted,
              LineId u) const
  {
    const LineId f = lines.FunctionOf(first, u, false, id);
    const LineId g = lines.FunctionOf(second, u, secondNegative, id);
    lines.SetDerivative(f, g);
    lines.SetDerivative(g, f);
    return wanted == first ? f : g;
  }

  /// f' = +-(1 + f^2), a line that follows f itself.
  LineId OfOwnSquare(Operation function, bool negative, LineId u) const
  {
    const LineId f = lines.FunctionOf(function, u, negative, id);
    lines.SetDerivative(f, OnePlusSquare(f));
    return f;
  }

  /// f' = +-1/g^2. Not 1 - f^2: where f is all but 1, all digits of that cancel, and nothing would
  /// show that f is going to move.
  LineId OverSquare(Operation function, Operation g, bool negative, LineId u) const
  {
    const LineId divisor = Pair(Operation::kSinh, Operation::kCosh, false, g, u);
    return lines.IntegralOfQuotient(function, u, lines.Product(divisor, divisor, id), negative, id);
  }

  LineId Exponential(LineId u) const
  {
    const LineId f = lines.FunctionOf(Operation::kExp, u, false, id);
    lines.SetDerivative(f, f);
    return f;
  }

  LineId ErrorFunction(LineId u) const
  {
    const LineId square = lines.Product(u, u, id);
    const LineId argument =
        lines.Materialise(arithmetic.Scale(arithmetic.Single(square), arithmetic.MinusOne()), id);
    const LinearForm bell = arithmetic.Single(Exponential(argument));
    const LineId derivative =
        lines.Materialise(arithmetic.Scale(bell, arithmetic.TwoBySqrtPi()), id);
    return lines.IntegralOfProduct(Operation::kErf, u, derivative, false, id);
  }
};

}  // namespace

LineId AddFunction(LineTable& lines, LinearArithmetic& arithmetic, Operation function, LineId u,
                   NodeId id)
{
  const FunctionLines make{lines, arithmetic, id};
  const auto overRoot = [&](LineId radicand, bool negative) {
    return lines.IntegralOfQuotient(function, u, lines.SquareRoot(radicand, id), negative, id);
  };
  const auto over = [&](LineId divisor, bool negative) {
    return lines.IntegralOfQuotient(function, u, divisor, negative, id);
  };
  switch (function) {
    case Operation::kSqrt:
      return lines.SquareRoot(u, id);
    case Operation::kCbrt:
      return lines.Power(u, function, arithmetic.OneThird(), id);
    case Operation::kExp:
      return make.Exponential(u);
    case Operation::kLn:
      return over(u, false);
    case Operation::kSin:
    case Operation::kCos:
      return make.Pair(Operation::kSin, Operation::kCos, true, function, u);
    case Operation::kSinh:
    case Operation::kCosh:
      return make.Pair(Operation::kSinh, Operation::kCosh, false, function, u);
    case Operation::kTan:
      return make.OfOwnSquare(function, false, u);
    case Operation::kCot:
      return make.OfOwnSquare(function, true, u);
    case Operation::kTanh:
      return make.OverSquare(function, Operation::kCosh, false, u);
    case Operation::kCoth:
      return make.OverSquare(function, Operation::kSinh, true, u);
    case Operation::kAsin:
      return overRoot(make.OneMinusSquare(u), false);
    case Operation::kAcos:
      return overRoot(make.OneMinusSquare(u), true);
    case Operation::kAtan:
      return over(make.OnePlusSquare(u), false);
    case Operation::kAcot:
      return over(make.OnePlusSquare(u), true);
    case Operation::kAsinh:
      return overRoot(make.OnePlusSquare(u), false);
    case Operation::kAcosh:
      return overRoot(make.SquareMinusOne(u), false);
    case Operation::kAtanh:
    case Operation::kAcoth:
      return over(make.OneMinusSquare(u), false);
    case Operation::kErf:
      return make.ErrorFunction(u);
    default:
      break;
  }
  assert(false && "not a function of one argument");
  return kNone;
}

LineId AddAngle(LineTable& lines, LinearArithmetic& arithmetic, LineId y, LineId x, NodeId id)
{
  // One after the other: the order of the lines must not depend on the compiler.
  const LinearForm ySquare = arithmetic.Single(lines.Product(y, y, id));
  const LinearForm xSquare = arithmetic.Single(lines.Product(x, x, id));
  return lines.Angle(y, x, lines.Materialise(arithmetic.Add(ySquare, xSquare), id), id);
}

}  // namespace varno::solve
