#include "solve/evaluation/disturbance.h"

#include <functional>
#include <string>

#include "solve/number/rational.h"
#include "solve/number/real.h"

namespace varno::solve {

namespace {

/// The finalizer of SplitMix64 (Steele, Lea, Flood 2014): every bit of the key changes half of the
/// result's bits.
std::uint64_t Scatter(std::uint64_t key)
{
  key += 0x9E3779B97F4A7C15u;
  key = (key ^ (key >> 30)) * 0xBF58476D1CE4E5B9u;
  key = (key ^ (key >> 27)) * 0x94D049BB133111EBu;
  return key ^ (key >> 31);
}

}  // namespace

void Disturb(mpfr_ptr number, std::uint64_t key)
{
  if (mpfr_regular_p(number) == 0) return;
  const std::uint64_t scattered = Scatter(key);
  // An odd number of units: never none.
  const long units = static_cast<long>(scattered >> (64 - kDisturbanceBits + 1)) * 2 + 1;
  const mpfr_exp_t unit = mpfr_get_exp(number) - mpfr_get_prec(number);
  Real shift(kDisturbanceBits + 1);
  // Away from 0 or towards it, so that opposite numbers stay opposite.
  const long sign = (scattered & 1) != 0 ? mpfr_sgn(number) : -mpfr_sgn(number);
  mpfr_set_si_2exp(shift, sign * units, unit, MPFR_RNDN);
  mpfr_add(number, number, shift, MPFR_RNDN);
}

std::uint64_t DisturbanceKey(const Graph& graph, NodeId constant)
{
  if (graph[constant].operation == Operation::kNegate) constant = graph[constant].operands[0];
  if (!graph.IsNumber(constant)) return constant;
  const Rational size = abs(graph.Value(constant));
  return std::hash<std::string>{}(size.get_str(36));
}

bool IsExact(const Graph& graph, NodeId constant, mpfr_prec_t bits)
{
  if (!graph.IsNumber(constant)) return false;
  Real value(bits);
  return mpfr_set_q(value, graph.Value(constant).get_mpq_t(), MPFR_RNDN) == 0;
}

}  // namespace varno::solve
