// The terms of large systems, made by waves, against those of a small one, made order by order: by
// symmetry, cells of a ring that begin alike every fourth are those of a ring of four.

#include <array>
#include <memory>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <mpfr.h>

#include "solve/fixed/narrow.h"
#include "solve/fixed/wide.h"
#include "solve/series/block_series.h"
#include "solve/tape/compile.h"
#include "solve/team/team.h"
#include "tests/solve/support/equations.h"

namespace varno::solve {
namespace {

using support::Equations;
using support::Expression;
using support::Function;
using enum Operation;

constexpr int kPeriod = 4;

using MakeRing = Tape (*)(int count);

/// The variables of one kind, one in each cell.
class Cells {
 public:
  Cells(Equations& m, const std::string& name, int count)
  {
    for (int i = 0; i < count; ++i) cells.push_back(m.Variable(name + std::to_string(i), 1));
  }
  const Expression& operator[](int i) const
  {
    const int count = static_cast<int>(cells.size());
    return cells[static_cast<std::size_t>((i + count) % count)];
  }

 private:
  std::vector<Expression> cells;
};

/// Oscillators, each bound to its neighbours, with a quotient and a root.
Tape Oscillators(int count)
{
  Equations m;
  const Cells x(m, "x", count), v(m, "v", count);
  for (int i = 0; i < count; ++i) {
    m.SetDerivative(x[i], v[i] / Function(kSqrt, 2 + x[i] * x[i]));
    m.SetDerivative(v[i], x[i - 1] - 2 * x[i] + x[i + 1] - x[i] * x[i] * x[i]);
  }
  return Compile(m.Finished());
}

/// The same, driven by the time.
Tape DrivenOscillators(int count)
{
  Equations m;
  const Cells x(m, "x", count), v(m, "v", count);
  for (int i = 0; i < count; ++i) {
    m.SetDerivative(x[i], v[i]);
    m.SetDerivative(v[i], x[i - 1] - 2 * x[i] + x[i + 1] - x[i] * x[i] * x[i] + m.Time());
  }
  return Compile(m.Finished());
}

/// From u = 1/2 and y = 1 on: u = 1/2 + t, y = 1 + t + t^10/10, which is exact up to the order 9,
/// so that differences of two of them are exactly 0 up to there; and all lines begin with a term
/// that is not 0, so that their exponents stay.
Tape RoundedLate(int count)
{
  Equations m;
  const Cells u(m, "u", count), y(m, "y", count), z(m, "z", count);
  for (int i = 0; i < count; ++i) {
    m.SetDerivative(u[i], 1 + 0 * u[i]);
    const Expression square = u[i] * u[i];
    // 1 + t^3, and 1 + t^9
    const Expression p =
        square * u[i] - Rational(3, 2) * square + Rational(3, 4) * u[i] + Rational(7, 8);
    m.SetDerivative(y[i], p * p * p - 3 * (p * p) + 3 * p);
    m.SetDerivative(z[i], 1 + y[i] - y[i + 1] + 0 * z[i]);
  }
  return Compile(m.Finished());
}

/// By kind and cell of the small ring
using Starts = std::vector<std::array<double, kPeriod>>;

const Starts kOfOscillators = {{0.7, -0.3, 1.1, 0.2}, {0.1, 0.9, -0.4, 0.6}};
const Starts kOfRoundedLate = {{0.5, 0.5, 0.5, 0.5}, {1, 1, 1, 1}, {1, 1, 1, 1}};

std::vector<Real> States(const Starts& starts, int count, mpfr_prec_t bits)
{
  std::vector<Real> states;
  for (const auto& ofKind : starts) {
    for (int i = 0; i < count; ++i)
      mpfr_set_d(states.emplace_back(bits), ofKind[static_cast<std::size_t>(i % kPeriod)],
                 MPFR_RNDN);
  }
  return states;
}

struct Case {
  const char* name;
  mpfr_prec_t bits;
  int order;
  long scaleExponent;  // small, or so large that terms rise, and exponents with them
  int cells;
  int threads;
};

std::shared_ptr<Team> TeamOf(int threads)
{
  return threads > 1 ? std::make_shared<Team>(threads) : nullptr;
}

/// How many terms of the states, logs and resolutions differ from those of the small ring.
int Differences(const Series& found, const Series& expected, const Case& with, std::size_t kinds)
{
  Real term(with.bits), like(with.bits);
  const auto cells = static_cast<std::size_t>(with.cells);
  int count = 0;
  for (std::size_t i = 0; i < kinds * cells; ++i) {
    const auto id = static_cast<LineId>(i),
               idLike = static_cast<LineId>(i / cells * kPeriod + i % cells % kPeriod);
    if (found.Resolution(id) != expected.Resolution(idLike)) ++count;
    for (int k = 0; k <= with.order; ++k) {
      found.Term(id, k, term);
      expected.Term(idLike, k, like);
      if (mpfr_equal_p(term, like) == 0 || found.Log2(id, k) != expected.Log2(idLike, k)) ++count;
    }
  }
  return count;
}

template <class Arithmetic>
void ExpectTermsOfSmallRing(MakeRing makeRing, const Starts& starts, const Case& with)
{
  SCOPED_TRACE(std::string(with.name) + ", threads: " + std::to_string(with.threads) +
               ", scale: " + std::to_string(with.scaleExponent));
  const Tape small = makeRing(kPeriod), large = makeRing(with.cells);
  BlockSeries<Arithmetic> expected(small, with.bits, with.order, false);
  BlockSeries<Arithmetic> found(large, with.bits, with.order, false, {}, TeamOf(with.threads));
  Real time(with.bits);
  mpfr_set_d(time, 0.125, MPFR_RNDN);
  const auto begin = [&](Series& series, int count) {
    series.Begin(time, States(starts, count, with.bits), false, with.scaleExponent);
    // As a step asks for them: some first.
    series.ExtendTo(with.order / 2);
    series.ExtendTo(with.order);
  };
  begin(expected, kPeriod);
  begin(found, with.cells);
  EXPECT_EQ(Differences(found, expected, with, starts.size()), 0);
}

TEST(BlockSeriesWaves, HaveTheTermsOfASmallSystem)
{
  for (const long scale : {-2L, 2L}) {
    for (const MakeRing ring : {Oscillators, DrivenOscillators}) {
      ExpectTermsOfSmallRing<NarrowArithmetic>(ring, kOfOscillators,
                                               {"narrow", 108, 43, scale, 600, 1});
      ExpectTermsOfSmallRing<WideArithmetic<8>>(ring, kOfOscillators,
                                                {"wide", 262, 50, scale, 600, 1});
    }
  }
}

TEST(BlockSeriesWaves, HaveTheSameTermsOnTwoThreads)
{
  for (const long scale : {-2L, 2L}) {
    ExpectTermsOfSmallRing<NarrowArithmetic>(Oscillators, kOfOscillators,
                                             {"narrow", 108, 43, scale, 600, 2});
    ExpectTermsOfSmallRing<WideArithmetic<8>>(Oscillators, kOfOscillators,
                                              {"wide", 262, 50, scale, 600, 2});
  }
}

// What a line finds of its operands is what they are up to its own order: exact.
TEST(BlockSeriesWaves, WaitUntilLinesAreSteady)
{
  ExpectTermsOfSmallRing<NarrowArithmetic>(RoundedLate, kOfRoundedLate,
                                           {"narrow", 108, 43, -2, 600, 1});
}

}  // namespace
}  // namespace varno::solve
