// Quotients q = a / b whose operands begin with 0, and whose dividend is made of them, as x'/t in
// the equation of Lane and Emden, x'' = -2 x'/t - x^5 from 0.
//
// Term k of q needs term k+1 of a, and that needs term k of q. All terms k of the tape, and with
// them a[k+1], are linear in q[k] (for k = 0 where the right-hand sides are so), and so is
//     r = a[k+1] - sum over j = 0..k of q[j] b[k+1-j],
// which two guesses tell, and a third computation confirms.
//
// Near the root a' = lambda a/t + ..., with solutions t^lambda: none of them but 0 begins with 0 if
// lambda <= 0, and only then is the solution unique.

#include <algorithm>
#include <cmath>

#include "solve/evaluation/domain_error.h"
#include "solve/evaluation/size.h"
#include "solve/series/mpfr_series.h"
#include "solve/tape/below.h"

namespace varno::solve {

namespace {

constexpr mpfr_rnd_t kNearest = MPFR_RNDN;
/// How far lambda may lie above 0 by rounding.
constexpr double kMostLambda = 1e-9;
/// The third computation confirms a solution to all but so many bits.
constexpr double kLostBits = 24;

}  // namespace

void MpfrSeries::AddFedQuotient(LineId quotient)
{
  fedQuotients.push_back(quotient);
  for (const LineId line : LinesAtOnce(tape, Operands(tape, quotient))) linesAhead.push_back(line);
  std::ranges::sort(linesAhead);
  linesAhead.erase(std::unique(linesAhead.begin(), linesAhead.end()), linesAhead.end());
}

bool MpfrSeries::IsFed(LineId id) const
{
  return std::ranges::find(fedQuotients, id) != fedQuotients.end();
}

/// r for each of the quotients when their terms k are these.
std::vector<Real> MpfrSeries::Residuals(int k, const std::vector<Real>& guesses,
                                        const std::function<void()>& computeTerms)
{
  for (std::size_t i = 0; i < fedQuotients.size(); ++i)
    mpfr_set(Terms(fedQuotients[i]) + k, guesses[i], kNearest);
  computeTerms();
  for (const LineId id : linesAhead) ComputeTerm(id, k + 1);
  std::vector<Real> residuals;
  for (const LineId id : fedQuotients) {
    const Line& line = tape.lines[id];
    // r = a[k+1] - sum over j = 1..k+1 of b[j] q[k+1-j]
    Real& residual = residuals.emplace_back(bits);
    Convolve(Terms(line.b), Terms(id), 1, k + 1, k + 1, sum);
    mpfr_sub(residual, Terms(line.a) + k + 1, sum, kNearest);
  }
  return residuals;
}

void MpfrSeries::SolveFedQuotients(int k, const std::function<void()>& computeTerms)
{
  const std::size_t count = fedQuotients.size();
  std::vector<Real> guesses(count, Real(bits));
  const std::vector<Real> atZero = Residuals(k, guesses, computeTerms);
  // A guess as large as the solution, so that neither hides the other.
  for (std::size_t i = 0; i < count; ++i) {
    const double log2 = Log2Size(atZero[i]) - Log2Size(Terms(tape.lines[fedQuotients[i]].b) + 1);
    const auto exponent = std::isfinite(log2) ? static_cast<mpfr_exp_t>(log2) : 0;
    mpfr_set_si_2exp(guesses[i], 1, exponent, kNearest);
  }
  const std::vector<Real> atGuess = Residuals(k, guesses, computeTerms);

  Real slope(bits), ratio(53);
  std::vector<double> sizes;
  for (std::size_t i = 0; i < count; ++i) {
    const Line& line = tape.lines[fedQuotients[i]];
    sizes.push_back(std::max(Log2Size(atZero[i]), Log2Size(atGuess[i])));
    // slope = (r(guess) - r(0)) / guess, q = -r(0) / slope
    mpfr_sub(slope, atGuess[i], atZero[i], kNearest);
    mpfr_div(slope, slope, guesses[i], kNearest);
    mpfr_srcptr b = Terms(line.b) + 1;
    const bool isRoot = mpfr_zero_p(Terms(line.a)) != 0 && mpfr_zero_p(Terms(line.b)) != 0;
    if (!isRoot || slope.IsZero() || mpfr_zero_p(b) != 0)
      throw DomainError{Outcome::kUndefined, line.node, Real(bits)};
    mpfr_div(ratio, slope, b, kNearest);
    // slope = (lambda/(k+1) - 1) b[1] where a is a variable
    if (k == 0 && ratio.ToDouble() + 1 > kMostLambda)
      throw DomainError{Outcome::kUndefined, line.node, Real(bits)};
    mpfr_div(guesses[i], atZero[i], slope, kNearest);
    mpfr_neg(guesses[i], guesses[i], kNearest);
  }
  const std::vector<Real> rest = Residuals(k, guesses, computeTerms);
  for (std::size_t i = 0; i < count; ++i) {
    if (!rest[i].IsZero() && Log2Size(rest[i]) > sizes[i] - static_cast<double>(bits) + kLostBits)
      throw DomainError{Outcome::kUndefined, tape.lines[fedQuotients[i]].node, Real(bits)};
  }
}

}  // namespace varno::solve
