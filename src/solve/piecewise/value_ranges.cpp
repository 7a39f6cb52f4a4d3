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

const std::optional<Range>& ValueRanges::Of(NodeId id)
{
  while (ranges.size() <= id) {
    std::optional<Range> range = RangeOf(static_cast<NodeId>(ranges.size()));
    // An end that comes of infinite ones may be none.
    if (range && mpfi_nan_p(*range) != 0) range = Everything();
    ranges.push_back(std::move(range));
  }
  return ranges[id];
}

int ValueRanges::SignOf(NodeId id)
{
  const std::optional<Range>& range = Of(id);
  if (!range) return 0;
  if (mpfr_sgn(range->Left()) > 0) return 1;
  return mpfr_sgn(range->Right()) < 0 ? -1 : 0;
}

std::optional<Range> ValueRanges::RangeOf(NodeId id) const
{
  const Node& node = graph[id];
  for (int i = 0; i < node.operandCount; ++i) {
    if (!ranges[node.operands[i]]) return std::nullopt;
  }
  const auto operand = [&](int i) -> const Range& { return *ranges[node.operands[i]]; };
  switch (node.operation) {
    case Operation::kNumber:
      return RangeOfNumber(graph.Value(id));
    case Operation::kPi:
      return RangeOfPi();
    case Operation::kTime:
    case Operation::kState:
    case Operation::kParameter:
    case Operation::kSinh:
    case Operation::kAsinh:
      return Everything();
    case Operation::kNegate:
      return -operand(0);
    case Operation::kAdd:
      return operand(0) + operand(1);
    case Operation::kSubtract:
      return operand(0) - operand(1);
    case Operation::kMultiply:
      if (node.operands[0] == node.operands[1]) return Through(mpfi_sqr, operand(0));
      return operand(0) * operand(1);
    case Operation::kDivide:
      if (operand(1).HasZero()) return std::nullopt;
      return operand(0) / operand(1);
    case Operation::kPower:
      return RangeOfPower(node);
    case Operation::kSqrt:
      if (mpfr_sgn(operand(0).Left()) < 0) return std::nullopt;
      return Through(mpfi_sqrt, operand(0));
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
      return std::nullopt;
  }
}

/// Of squares and other even powers.
std::optional<Range> ValueRanges::RangeOfPower(const Node& node) const
{
  if (!graph.IsNumber(node.operands[1])) return std::nullopt;
  const Rational& exponent = graph.Value(node.operands[1]);
  if (exponent.get_den() != 1 || exponent < 0) return std::nullopt;
  if (exponent == 2) return Through(mpfi_sqr, *ranges[node.operands[0]]);
  return mpz_even_p(exponent.get_num_mpz_t()) != 0 ? Unsigned() : Everything();
}

}  // namespace varno::solve
