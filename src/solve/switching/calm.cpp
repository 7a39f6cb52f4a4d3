#include "solve/switching/calm.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <limits>

#include "solve/evaluation/size.h"
#include "solve/switching/largest.h"

namespace varno::solve {

namespace {

constexpr double kNothing = -std::numeric_limits<double>::infinity();
constexpr int kParts = 100;
/// What is as large as allowed but for rounding is allowed: so much more than the maxima are wrong
/// by.
constexpr double kSlack = 1e-8;

/// The terms of a series as doubles, in units of the largest one.
struct ScaledTerms {
  std::vector<double> terms = {};
  double log2Unit = 0;
};

/// Of a state over a step, which is as long as the unit of x.
ScaledTerms TermsOf(const StateTerms& series, std::size_t state, double log2Step)
{
  ScaledTerms scaled;
  std::vector<double> sizes;
  double largest = kNothing;
  for (int k = 0; k <= series.Order(); ++k) {
    sizes.push_back(series.Log2(static_cast<LineId>(state), k) + k * log2Step);
    largest = std::max(largest, sizes.back());
  }
  if (largest == kNothing) return scaled;
  scaled.log2Unit = largest;
  Real term(53);
  for (std::size_t k = 0; k < sizes.size(); ++k) {
    series.Term(static_cast<LineId>(state), static_cast<int>(k), term);
    scaled.terms.push_back(mpfr_sgn(static_cast<mpfr_srcptr>(term)) *
                           std::exp2(sizes[k] - largest));
  }
  return scaled;
}

ScaledTerms DerivativeOf(const ScaledTerms& scaled)
{
  ScaledTerms derivative{{}, scaled.log2Unit};
  for (std::size_t k = 1; k < scaled.terms.size(); ++k)
    derivative.terms.push_back(static_cast<double>(k) * scaled.terms[k]);
  return derivative;
}

double Log2Largest(const ScaledTerms& scaled, double begin, double end)
{
  const double largest = LargestMagnitude(scaled.terms, begin, end);
  return largest == 0 ? kNothing : std::log2(largest) + scaled.log2Unit;
}

double Ratio(const Moment& a, const Moment& b)
{
  Real dividend(64), divisor(64);
  a.Evaluate(dividend);
  b.Evaluate(divisor);
  mpfr_div(dividend, dividend, divisor, MPFR_RNDN);
  return dividend.ToDouble();
}

}  // namespace

Calm::Calm(const Moment& start, const Moment& end, double log2Tolerance)
    : start(start),
      part((end - start) * Rational(1, kParts)),
      log2Tolerance(log2Tolerance),
      partEnd(start + part)
{}

std::optional<Moment> Calm::Add(const DenseStep& step)
{
  largestValues.resize(step.states.size(), kNothing);
  largestSlopes.resize(step.states.size(), kNothing);
  if (step.series == nullptr || step.begin == step.end) return std::nullopt;
  Moment from = step.begin;
  while (partsDone < kParts && !step.IsBehind(partEnd)) {
    AddStretch(step, from, partEnd);
    if (IsCalm()) return partEnd;
    std::ranges::fill(largestSlopes, kNothing);
    from = partEnd;
    partEnd = start + part * Rational(++partsDone + 1);
  }
  if (from != step.end) AddStretch(step, from, step.end);
  return std::nullopt;
}

void Calm::AddStretch(const DenseStep& step, const Moment& from, const Moment& to)
{
  const Moment length = step.end - step.begin;
  const double log2Length = Log2Size(length);
  const double begin = Ratio(from - step.begin, length), end = Ratio(to - step.begin, length);
  const double log2Step = log2Length - static_cast<double>(step.scaleExponent);
  for (std::size_t i = 0; i < largestValues.size(); ++i) {
    const ScaledTerms terms = TermsOf(*step.series, i, log2Step);
    largestValues[i] = std::max(largestValues[i], Log2Largest(terms, begin, end));
    largestSlopes[i] =
        std::max(largestSlopes[i], Log2Largest(DerivativeOf(terms), begin, end) - log2Length);
  }
}

bool Calm::IsCalm() const
{
  for (std::size_t i = 0; i < largestValues.size(); ++i) {
    if (largestSlopes[i] > log2Tolerance + largestValues[i] + kSlack) return false;
  }
  return true;
}

}  // namespace varno::solve
