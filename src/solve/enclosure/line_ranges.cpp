#include "solve/enclosure/line_ranges.h"

#include <cmath>

#include "solve/evaluation/constant.h"

namespace varno::solve {

namespace {

/// To reduce larger angles takes as many digits of pi, again and again.
constexpr mpfr_exp_t kLargestAngleExponent = 10'000;
/// Of an end nearer to 0 than 2^this, MPFI would take as many.
constexpr mpfr_exp_t kSmallestAngleExponent = -10'000;
/// Constants are computed to so many bits more than are kept.
constexpr mpfr_prec_t kConstantGuardBits = 16;

Range ConstantRange(const Graph& graph, NodeId node, mpfr_prec_t bits)
{
  Range range(bits);
  if (graph.IsNumber(node)) {
    mpfi_set_q(range, graph.Value(node).get_mpq_t());
    return range;
  }
  const Real value = EvaluateConstant(graph, node, bits + kConstantGuardBits);
  if (value.IsZero()) return range;
  // A unit of the last bit kept is far more than the error of the bits that are not.
  Real below(bits), above(bits);
  mpfr_set(below, value, MPFR_RNDD);
  mpfr_set(above, value, MPFR_RNDU);
  mpfr_nextbelow(below);
  mpfr_nextabove(above);
  mpfi_interv_fr(range, below, above);
  return range;
}

bool IsSmallAngle(const Range& a)
{
  const Real size = a.Magnitude();
  return size.IsZero() || mpfr_get_exp(static_cast<mpfr_srcptr>(size)) <= kLargestAngleExponent;
}

/// Moves the end of an angle away, by the sign of `outwards`, from 0 or to it where it is very
/// near.
Real Settled(mpfr_srcptr end, int outwards)
{
  Real result(mpfr_get_prec(end));
  mpfr_set(result, end, MPFR_RNDN);
  if (mpfr_regular_p(end) == 0 || mpfr_get_exp(end) >= kSmallestAngleExponent) return result;
  const bool isAway = (mpfr_sgn(end) > 0) == (outwards > 0);
  mpfr_set_si_2exp(result, isAway ? outwards : 0, kSmallestAngleExponent, MPFR_RNDN);
  return result;
}

/// A range that holds an angle and has no end very near to 0.
Range Angle(const Range& a)
{
  Range result(a.Bits());
  mpfi_interv_fr(result, Settled(a.Left(), -1), Settled(a.Right(), 1));
  return result;
}

/// Whether a lies in [-limit, limit], or outside of [-limit, limit].
bool IsWithin(const Range& a, long limit)
{
  return mpfr_cmp_si(a.Left(), -limit) > 0 && mpfr_cmp_si(a.Right(), limit) < 0;
}

bool IsBeyond(const Range& a, long limit)
{
  return mpfr_cmp_si(a.Left(), limit) > 0 || mpfr_cmp_si(a.Right(), -limit) < 0;
}

/// erf rises everywhere.
void ErrorFunction(const Range& a, Range& result)
{
  Real left(result.Bits()), right(result.Bits());
  mpfr_erf(left, a.Left(), MPFR_RNDD);
  mpfr_erf(right, a.Right(), MPFR_RNDU);
  mpfi_interv_fr(result, left, right);
}

/// Sets result to the range of a function of one argument; false outside of its domain.
bool Function(Operation function, const Range& a, Range& result)
{
  switch (function) {
    case Operation::kExp:
      mpfi_exp(result, a);
      return true;
    case Operation::kLn:
      mpfi_log(result, a);
      return a.IsPositive();
    case Operation::kSin:
      return IsSmallAngle(a) && mpfi_sin(result, Angle(a)) >= 0;
    case Operation::kCos:
      return IsSmallAngle(a) && mpfi_cos(result, Angle(a)) >= 0;
    case Operation::kTan:
      return IsSmallAngle(a) && mpfi_tan(result, Angle(a)) >= 0;
    case Operation::kCot:
      // Of 0 alone there is no cotangent, and MPFI 1.5 would lose memory over it.
      return IsSmallAngle(a) && !a.IsZero() && mpfi_cot(result, Angle(a)) >= 0;
    case Operation::kAsin:
      return IsWithin(a, 1) && mpfi_asin(result, a) >= 0;
    case Operation::kAcos:
      return IsWithin(a, 1) && mpfi_acos(result, a) >= 0;
    case Operation::kAtan:
      mpfi_atan(result, a);
      return true;
    case Operation::kAcot:
      if (a.HasZero()) return false;
      mpfi_inv(result, a);
      mpfi_atan(result, result);
      return true;
    case Operation::kSinh:
      mpfi_sinh(result, a);
      return true;
    case Operation::kCosh:
      mpfi_cosh(result, a);
      return true;
    case Operation::kTanh:
      mpfi_tanh(result, a);
      return true;
    case Operation::kCoth:
      mpfi_coth(result, a);
      return !a.HasZero();
    case Operation::kAsinh:
      mpfi_asinh(result, a);
      return true;
    case Operation::kAcosh:
      mpfi_acosh(result, a);
      return mpfr_cmp_ui(a.Left(), 1) > 0;
    case Operation::kAtanh:
      return IsWithin(a, 1) && mpfi_atanh(result, a) >= 0;
    case Operation::kAcoth:
      if (!IsBeyond(a, 1)) return false;
      mpfi_inv(result, a);
      mpfi_atanh(result, result);
      return true;
    case Operation::kErf:
      ErrorFunction(a, result);
      return true;
    default:
      return false;
  }
}

/// Whether a range ends at 0.
bool IsOnOneSide(const Range& a)
{
  return mpfr_sgn(a.Left()) == 0 || mpfr_sgn(a.Right()) == 0;
}

/// a^exponent = exp(exponent ln a)
void RealPower(const Range& a, const Range& exponent, Range& result)
{
  mpfi_log(result, a);
  mpfi_mul(result, result, exponent);
  mpfi_exp(result, result);
}

}  // namespace

LineRanges::LineRanges(const Tape& tape, mpfr_prec_t bits) : tape(tape), bits(bits), zero(bits)
{
  for (const NodeId constant : tape.constants)
    constants.push_back(ConstantRange(tape.graph, constant, bits));
}

const Range& LineRanges::Constant(ConstantId constant) const
{
  return constant == kNone ? zero : constants[constant];
}

Range LineRanges::Weight(const Factor& factor) const
{
  if (factor.whole == 0) return Constant(factor.constant);
  Range weight(bits);
  mpfi_set_si(weight, factor.whole);
  return weight;
}

void LineRanges::Combination(const Line& line, const std::vector<Range>& ranges,
                             Range& result) const
{
  result = Constant(line.constant);
  for (std::uint32_t i = 0; i < line.factorCount; ++i) {
    const Factor& factor = tape.factors[line.firstFactor + i];
    result = result + Weight(factor) * ranges[factor.line];
  }
}

bool LineRanges::Evaluate(const Line& line, const Box& box, const std::vector<Range>& ranges,
                          Range& result) const
{
  switch (line.kind) {
    case LineKind::kConstant:
      result = Constant(line.constant);
      return true;
    case LineKind::kTime:
      result = box.time;
      return true;
    case LineKind::kState:
      result = box.states[line.index];
      return true;
    case LineKind::kCombination:
      Combination(line, ranges, result);
      return true;
    case LineKind::kProduct:
      mpfi_mul(result, ranges[line.a], ranges[line.b]);
      return true;
    case LineKind::kSquare:
      mpfi_sqr(result, ranges[line.a]);
      return true;
    case LineKind::kQuotient:
      mpfi_div(result, ranges[line.a], ranges[line.b]);
      return !ranges[line.b].HasZero();
    case LineKind::kSquareRoot:
      mpfi_sqrt(result, ranges[line.a]);
      return ranges[line.a].IsPositive();
    case LineKind::kPower:
      if (line.function == Operation::kCbrt) {
        mpfi_cbrt(result, ranges[line.a]);
        return !ranges[line.a].HasZero();
      }
      RealPower(ranges[line.a], Constant(line.constant), result);
      return ranges[line.a].IsPositive();
    case LineKind::kIntegralOfProduct:
    case LineKind::kIntegralOfQuotient:
      return Function(line.function, ranges[line.a], result);
    case LineKind::kAngle:
      // To the left of the origin the angle jumps from pi to -pi where y passes 0.
      if (ranges[line.a].HasZero() && !ranges[line.b].IsPositive()) return false;
      mpfi_atan2(result, ranges[line.a], ranges[line.b]);
      return true;
  }
  return false;
}

std::optional<std::vector<Range>> LineRanges::Over(const Box& box, const HeldLines& held,
                                                   const KnownRanges& known) const
{
  std::vector<Range> ranges;
  ranges.reserve(tape.lines.size());
  for (LineId id = 0; id < tape.lines.size(); ++id) {
    Range range(bits);
    if (const auto found = known.find(id); found != known.end()) {
      range = found->second;
    } else if (!Evaluate(tape.lines[id], box, ranges, range) || !range.IsBounded()) {
      return std::nullopt;
    }
    if (const auto constant = held.find(id); constant != held.end())
      range.Include(constant->second);
    ranges.push_back(std::move(range));
  }
  return ranges;
}

std::optional<Range> LineRanges::UpToEdge(LineId id, const Box& box,
                                          const std::vector<Range>& ranges) const
{
  const Line& line = tape.lines[id];
  Range range(bits);
  bool hasRange = Evaluate(line, box, ranges, range);
  if (line.kind == LineKind::kQuotient) hasRange = hasRange || IsOnOneSide(ranges[line.b]);
  if (line.kind == LineKind::kSquareRoot || line.kind == LineKind::kPower)
    hasRange = hasRange || mpfr_sgn(ranges[line.a].Left()) == 0;
  if (!hasRange || mpfi_nan_p(range) != 0) return std::nullopt;
  return range;
}

}  // namespace varno::solve
