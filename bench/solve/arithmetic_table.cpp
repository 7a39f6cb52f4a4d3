// Integrations against the arithmetic that they need, with the digits that they reach.
//
// C is the number of products of series terms in the recurrences of a run, times the time of one
// mpf_mul and one mpf_add at its precision, measured here. A square counts half, a product with a
// constant one for each term. Times are those of one run, the integration alone.
//
//   arithmetic_table [PROBLEM [DIGITS]]

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <vector>

#include <gmpxx.h>

#include "bench/cpu_clock.h"
#include "bench/solve/integrations.h"
#include "solve/evaluation/size.h"

namespace varno::solve {
namespace {

/// Digits more, of the run that errors are measured with.
constexpr int kReferenceDigits = 25;

/// The products of terms 0..p in the recurrence of a line.
double Products(const Tape& tape, const Line& line, double p)
{
  const double whole = (p + 1) * (p + 2) / 2, behindFirst = p * (p + 1) / 2;
  switch (line.kind) {
    case LineKind::kConstant:
    case LineKind::kTime:
    case LineKind::kState:
      return 0;
    case LineKind::kCombination: {
      const auto first = tape.factors.begin() + line.firstFactor;
      const auto scaled = std::count_if(first, first + line.factorCount, [](const Factor& factor) {
        return factor.whole != 1 && factor.whole != -1;
      });
      return static_cast<double>(scaled) * (p + 1);
    }
    case LineKind::kProduct:
      return whole;
    case LineKind::kSquare:
      return whole / 2;
    case LineKind::kSquareRoot:
      return behindFirst / 2 + p;
    case LineKind::kIntegralOfProduct:
      return behindFirst;
    case LineKind::kQuotient:
    case LineKind::kPower:
    case LineKind::kIntegralOfQuotient:
      return behindFirst + p;
    case LineKind::kAngle:
      return 3 * behindFirst + p;
  }
  return 0;
}

/// Seconds of one multiplication and one addition of GMP's, as in a sum of products: the least of
/// several measurements.
double SecondsOfProduct(mpfr_prec_t bits)
{
  constexpr int kTerms = 30;
  constexpr int kRounds = 200;
  const auto precision = static_cast<mp_bitcnt_t>(bits);
  gmp_randclass random(gmp_randinit_default);
  std::vector<mpf_class> a, b;
  for (int i = 0; i < kTerms; ++i) {
    a.push_back(random.get_f(precision));
    b.push_back(random.get_f(precision));
  }
  mpf_class product(0, precision), sum(0, precision);
  double least = INFINITY;
  for (int repetition = 0; repetition < 20; ++repetition) {
    const double begin = CpuSeconds();
    for (int round = 0; round < kRounds; ++round) {
      for (int i = 0; i < kTerms; ++i) {
        mpf_mul(product.get_mpf_t(), a[i].get_mpf_t(), b[kTerms - 1 - i].get_mpf_t());
        mpf_add(sum.get_mpf_t(), sum.get_mpf_t(), product.get_mpf_t());
      }
    }
    least = std::min(least, CpuSeconds() - begin);
  }
  return least / (kTerms * kRounds);
}

/// The products of a run with steps of these orders.
double Products(const Tape& tape, const std::vector<int>& orders)
{
  double products = 0;
  for (const int order : orders) {
    for (const Line& line : tape.lines) products += Products(tape, line, order);
  }
  return products;
}

/// Right digits of the worst state.
double RightDigits(const std::vector<Real>& states, const std::vector<Real>& exact)
{
  double worst = INFINITY;
  for (std::size_t i = 0; i < states.size(); ++i) {
    Real error(exact[i].Bits());
    mpfr_sub(error, states[i], exact[i], MPFR_RNDN);
    worst = std::min(worst, (Log2Size(exact[i]) - Log2Size(error)) * std::log10(2.0));
  }
  return worst;
}

void Measure(const Problem& problem, int digits)
{
  const CompiledProblem compiled(problem);
  const RunSettings settings = SettingsForDigits(digits);
  const Integration run(compiled, problem.to, settings),
      reference(compiled, problem.to, SettingsForDigits(digits + kReferenceDigits));
  const double seconds = LeastSeconds(compiled, problem.to, settings);
  const double products = Products(compiled.tape, run.orders);
  const double c = products * SecondsOfProduct(run.bits);
  std::printf("| %s | %d | %zu | %d | %ld | %.3g | %.2f ms | %.2f ms | %.2f | %.1f |\n",
              problem.name.c_str(), digits, run.orders.size(), run.orders.back(),
              static_cast<long>(run.bits), products, 1e3 * seconds, 1e3 * c, seconds / c,
              RightDigits(run.states, reference.states));
  std::fflush(stdout);
}

}  // namespace
}  // namespace varno::solve

int main(int argc, char** argv)
{
  std::printf(
      "| problem | digits | steps | order | bits | products | time | C | time / C | right |\n");
  std::printf("|---|---|---|---|---|---|---|---|---|---|\n");
  varno::solve::MeasureProblems(argc, argv, varno::solve::Measure);
  return 0;
}
