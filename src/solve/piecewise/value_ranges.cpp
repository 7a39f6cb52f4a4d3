#include "solve/piecewise/value_ranges.h"

namespace varno::solve {

namespace {

constexpr mpfr_prec_t kBits = 64;

Range Everything()
{
  Range range(kBits);
  Real infinity(kBits);
  mpfr_set_inf(infinity, -1);
  range.Include(infinity);
  mpfr_set_inf(infinity, 1);
  range.Include(infinity);
  return range;
}

/// All numbers from 0 on.
Range Unsigned()
{
  Range range(kBits);
  Real infinity(kBits);
  mpfr_set_inf(infinity, 1);
  range.Include(infinity);
  return range;
}

Range RangeOfNumber(const Rational& value)
{
  Range range(kBits);
  mpfi_set_q(range, value.get_mpq_t());
  return range;
}

Range RangeOfPi()
{
  Range range(kBits);
  mpfi_const_pi(range);
  return range;
}

/// The values of a function of MPFI's.
Range Through(int (*function)(mpfi_ptr, mpfi_srcptr), const Range& argument)
{
  Range range(kBits);
  function(range, argument);
  return range;
}

}  // namespace

const Range& ValueRanges::Of(NodeId id)
{
  while (ranges.size() <= id) {
    Range range = RangeOf(graph[static_cast<NodeId>(ranges.size())]);
    // An end that comes of infinite ones may be none.
    ranges.push_back(mpfi_nan_p(range) != 0 ? Everything() : std::move(range));
  }
  return ranges[id];
}

int ValueRanges::SignOf(NodeId id)
{
  const Range& range = Of(id);
  if (mpfr_sgn(range.Left()) > 0) return 1;
  return mpfr_sgn(range.Right()) < 0 ? -1 : 0;
}

Range ValueRanges::RangeOf(const Node& node) const
{
  const auto operand = [&](int i) -> const Range& { return ranges[node.operands[i]]; };
  switch (node.operation) {
    case Operation::kNumber:
      return RangeOfNumber(graph.Value(static_cast<NodeId>(ranges.size())));
    case Operation::kPi:
      return RangeOfPi();
    case Operation::kNegate:
      return -operand(0);
    case Operation::kAdd:
      return operand(0) + operand(1);
    case Operation::kSubtract:
      return operand(0) - operand(1);
    case Operation::kMultiply:
      return ProductOf(node);
    case Operation::kDivide:
      return operand(0) / operand(1);
    case Operation::kPower:
      return PowerOf(node);
    case Operation::kSqrt:
      return Unsigned();
    case Operation::kAbs:
      return Through(mpfi_abs, operand(0));
    case Operation::kExp:
      return Through(mpfi_exp, operand(0));
    case Operation::kSin:
      return Through(mpfi_sin, operand(0));
    case Operation::kCos:
      return Through(mpfi_cos, operand(0));
    case Operation::kAtan:
      return Through(mpfi_atan, operand(0));
    case Operation::kCosh:
      return Through(mpfi_cosh, operand(0));
    case Operation::kTanh:
      return Through(mpfi_tanh, operand(0));
    default:
      return Everything();
  }
}

Range ValueRanges::ProductOf(const Node& node) const
{
  const Range &a = ranges[node.operands[0]], &b = ranges[node.operands[1]];
  return node.operands[0] == node.operands[1] ? Through(mpfi_sqr, a) : a * b;
}

/// Of squares and other even powers.
Range ValueRanges::PowerOf(const Node& node) const
{
  if (!graph.IsNumber(node.operands[1])) return Everything();
  const Rational& exponent = graph.Value(node.operands[1]);
  if (exponent == 2) return Through(mpfi_sqr, ranges[node.operands[0]]);
  const bool isEven = exponent.get_den() == 1 && mpz_even_p(exponent.get_num_mpz_t()) != 0;
  return isEven ? Unsigned() : Everything();
}

}  // namespace varno::solve
