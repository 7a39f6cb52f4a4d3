#include "solve/integration/watched_roots.h"

#include <algorithm>
#include <limits>
#include <utility>

#include "solve/evaluation/size.h"
#include "solve/roots/isolation.h"
#include "solve/roots/refinement.h"

namespace varno::solve {

namespace {

constexpr double kInfinity = std::numeric_limits<double>::infinity();

/// A root with its place as a part of the step.
struct PlacedRoot {
  WatchedRoot root;
  UncertainValue place;
};

/// Whether all terms of a line from the first on are 0.
bool IsZero(const Series& series, LineId line, int first)
{
  for (int k = first; k <= series.Order(); ++k) {
    if (series.Log2(line, k) > -kInfinity) return false;
  }
  return true;
}

double Log2Largest(const UncertainPolynomial& polynomial)
{
  double largest = -kInfinity;
  for (const Real& coefficient : polynomial.coefficients)
    largest = std::max(largest, Log2Size(coefficient));
  return largest;
}

/// The sign that a simple root at an end of the step leaves open follows from the other one.
void CompleteSigns(WatchedRoot& root)
{
  if (root.mostRoots != 1) return;
  if (root.signBefore == 0) root.signBefore = -root.signAfter;
  if (root.signAfter == 0) root.signAfter = -root.signBefore;
}

/// The first root of a line in the step.
std::optional<PlacedRoot> FirstRoot(const Tape& tape, const SeriesStep& step,
                                    const WatchedLine& watched, std::size_t index)
{
  const auto [line, first, mayBeZero] = watched;
  if (first > step.series.Order()) return std::nullopt;
  if (mayBeZero && IsZero(step.series, line, first)) return std::nullopt;
  if (FirstTermOutweighs(step.series, line, first, Log2Size(step.length)) &&
      FirstTermStandsOut(step, line, first))
    return std::nullopt;
  const UncertainPolynomial polynomial = OverStep(tape, step, line, first);
  const std::vector<RootInterval> found = IsolateRoots(polynomial);
  if (found.empty()) return std::nullopt;
  const RootInterval& interval = found.front();
  WatchedRoot root{index, interval.signBefore, interval.signAfter, interval.mostRoots,
                   Log2Largest(polynomial) - step.sizes[line]};
  CompleteSigns(root);
  // Where the sign is not known from there on, the step is good as far as there only.
  if (root.signBefore == 0) return PlacedRoot{root, {interval.begin, Real(kErrorBits)}};
  return PlacedRoot{root, RefineRoot(polynomial, interval)};
}

enum class Places { kSame, kInDoubt, kApart };

/// Whether two places may be the same one. `log2Length` is of the step, of which they are parts.
Places Compare(const UncertainValue& a, const UncertainValue& b, const Nearness& nearness,
               double log2Length)
{
  Real distance(kErrorBits), error(kErrorBits);
  mpfr_sub(distance, a.value, b.value, MPFR_RNDZ);
  mpfr_add(error, a.error, b.error, MPFR_RNDU);
  const double log2Distance = Log2Size(distance) + log2Length;
  if (mpfr_cmpabs(distance, error) <= 0 || log2Distance <= nearness.same) return Places::kSame;
  return log2Distance <= nearness.doubt ? Places::kInDoubt : Places::kApart;
}

}  // namespace

std::optional<WatchedRootsAhead> FirstWatchedRoots(const Tape& tape, const SeriesStep& step,
                                                   std::span<const WatchedLine> watched,
                                                   const Nearness& nearness)
{
  std::vector<PlacedRoot> placed;
  for (std::size_t i = 0; i < watched.size(); ++i) {
    if (auto root = FirstRoot(tape, step, watched[i], i)) placed.push_back(*std::move(root));
  }
  if (placed.empty()) return std::nullopt;
  const auto first = std::ranges::min_element(placed, [](const PlacedRoot& a, const PlacedRoot& b) {
    return mpfr_less_p(a.place.value, b.place.value) != 0;
  });
  WatchedRootsAhead ahead{{}, first->place.value, first->place.error};
  const double log2Length = Log2Size(step.length);
  for (const PlacedRoot& root : placed) {
    const Places places = Compare(root.place, first->place, nearness, log2Length);
    if (places == Places::kSame) ahead.roots.push_back(root.root);
    ahead.isInDoubt |= places == Places::kInDoubt;
  }
  mpfr_mul(ahead.place, ahead.place, step.length, MPFR_RNDN);
  mpfr_mul(ahead.error, ahead.error, step.length, MPFR_RNDU);
  return ahead;
}

}  // namespace varno::solve
