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
#include <cstdlib>
#include <string>
#include <string_view>
#include <vector>

#include <gmpxx.h>

#include "bench/cpu_clock.h"
#include "solve/evaluation/evaluator.h"
#include "solve/evaluation/size.h"
#include "solve/integration/run.h"
#include "solve/language/parse.h"
#include "solve/model/build_model.h"
#include "solve/tape/compile.h"

namespace varno::solve {
namespace {

/// Digits more than asked for, as runs begin with.
constexpr int kSpareDigits = 7;
/// Those of the run that errors are measured with.
constexpr int kReferenceDigits = 25;
constexpr double kLeastSeconds = 0.3;
constexpr int kMostRepetitions = 50;

struct Problem {
  std::string name, text, to;
};

/// The Brusselator with diffusion along a line: u and v in 50 cells, 1 and 3 at both ends.
std::string BrusselatorLine()
{
  constexpr int kCells = 50;
  std::string text;
  const auto cell = [](const char* name, int i, const char* edge) {
    return i == 0 || i > kCells ? std::string(edge) : name + std::to_string(i);
  };
  for (int i = 1; i <= kCells; ++i) {
    const std::string u = cell("u", i, ""), v = cell("v", i, "");
    const auto spread = [&](const char* name, const char* edge) {
      return " + 2601/50*(" + cell(name, i - 1, edge) + " - 2*" + cell(name, i, edge) + " + " +
             cell(name, i + 1, edge) + ")";
    };
    text += u + "' = 1 + " + u + "^2*" + v + " - 4*" + u + spread("u", "1") + " & 1 + sin(2*pi*" +
            std::to_string(i) + "/51);\n";
    text += v + "' = 3*" + u + " - " + u + "^2*" + v + spread("v", "3") + " & 3;\n";
  }
  return text;
}

std::vector<Problem> Problems()
{
  return {
      {"lorenz", "x' = 10*(y - x) & 1; y' = x*(28 - z) - y & 1; z' = x*y - 8/3*z & 1;", "10"},
      {"kepler", "x'' = -x/r^3; y'' = -y/r^3; x(0) = 1/2; y'(0) = sqrt(3); r = sqrt(x^2 + y^2);",
       "3927/125"},  // five periods of 2 pi
      {"brusselator", BrusselatorLine(), "1"},
      {"pendulum", "a'' = -sin(a); a(0) = 2;", "20"},
  };
}

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

struct Outcome {
  std::vector<Real> states;
  double seconds;
  double products = 0;
  std::int64_t steps;
  int order;
  mpfr_prec_t bits;
};

Outcome Integrate(const Model& model, const Tape& tape, const Moment& end, int digits)
{
  const RunSettings settings = SettingsFor(digits + kSpareDigits, digits + kSpareDigits);
  std::vector<Real> start;
  for (const State& state : model.states)
    start.push_back(EvaluateConstant(model.graph, state.start, settings.bits));
  double products = 0;
  const double begin = CpuSeconds();
  Run run(tape, settings, Moment(Rational(0)), std::move(start), end);
  std::vector<int> orders;
  while (run.IsBehind(end)) {
    run.Step();
    orders.push_back(run.Order());
  }
  std::vector<Real> states = run.StatesAt(end);
  const double seconds = CpuSeconds() - begin;
  for (const int order : orders) {
    for (const Line& line : tape.lines) products += Products(tape, line, order);
  }
  return {std::move(states), seconds, products, run.Steps(), run.Order(), run.Bits()};
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
  Sources sources;
  Diagnostics diagnostics;
  const std::uint32_t source = sources.Add(problem.name, problem.text);
  const Model model =
      BuildModel(ParseProblem(sources, source, diagnostics), {}, sources, diagnostics);
  const Tape tape = Compile(model);
  const Moment end{Rational(problem.to)};

  Outcome best = Integrate(model, tape, end, digits);
  double total = best.seconds;
  for (int i = 1; i < kMostRepetitions && total < kLeastSeconds; ++i) {
    const Outcome again = Integrate(model, tape, end, digits);
    total += again.seconds;
    best.seconds = std::min(best.seconds, again.seconds);
  }
  const double c = best.products * SecondsOfProduct(best.bits);
  const Outcome reference = Integrate(model, tape, end, digits + kReferenceDigits);
  std::printf("| %s | %d | %lld | %d | %ld | %.3g | %.2f ms | %.2f ms | %.2f | %.1f |\n",
              problem.name.c_str(), digits, static_cast<long long>(best.steps), best.order,
              static_cast<long>(best.bits), best.products, 1e3 * best.seconds, 1e3 * c,
              best.seconds / c, RightDigits(best.states, reference.states));
  std::fflush(stdout);
}

}  // namespace
}  // namespace varno::solve

int main(int argc, char** argv)
{
  const std::string_view wanted = argc > 1 ? argv[1] : "";
  const int wantedDigits = argc > 2 ? std::atoi(argv[2]) : 0;
  std::printf(
      "| problem | digits | steps | order | bits | products | time | C | time / C | right |\n");
  std::printf("|---|---|---|---|---|---|---|---|---|---|\n");
  for (const auto& problem : varno::solve::Problems()) {
    if (!wanted.empty() && wanted != problem.name) continue;
    for (const int digits : {15, 60, 250}) {
      if (wantedDigits == 0 || wantedDigits == digits) varno::solve::Measure(problem, digits);
    }
  }
  return 0;
}
