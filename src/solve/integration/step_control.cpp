#include "solve/integration/step_control.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <optional>

#include "solve/integration/leading_terms.h"
#include "solve/integration/line_sizes.h"
#include "solve/integration/tape_cut.h"

namespace varno::solve {

namespace {

constexpr double kInfinity = std::numeric_limits<double>::infinity();
/// The radius of convergence is taken from this many terms that are not zero, nor rounding: these
/// stand out of what rounding may have made of them by some bits.
constexpr int kTermsForRadius = 5;
constexpr double kNoiseBits = 8;
/// How far the order may grow beyond the usual one for lines whose terms vanish.
constexpr int kMostOrderFactor = 6;
/// How far it may grow to hold all terms of a line that is a polynomial by its structure, or to
/// reach a first term that is known not to be 0.
constexpr int kMostKnownOrder = 5000;
/// A line that begins with more vanishing terms than this is flat: the order counts from its first
/// term that is not 0.
constexpr int kMostVanishingTerms = 5;

/// Terms that grow at all do so before this one: one that has fallen until there goes on to.
constexpr std::size_t kTermsBeforeTheFall = 16;

/// A difference of logarithms that is more than their rounding.
constexpr double kClearly = 1e-3;

/// How many terms vanish before the first that does not.
int VanishingTerms(std::span<const double> terms)
{
  const auto first = std::ranges::find_if(terms, [](double term) { return term > -kInfinity; });
  return static_cast<int>(first - terms.begin());
}

/// Whether a line shows enough terms to tell how far its series reaches.
bool AreShown(std::span<const double> terms)
{
  int found = 0;
  for (std::size_t k = terms.size() - 1; k > 0 && found < kTermsForRadius; --k) {
    if (terms[k] > -kInfinity) ++found;
  }
  return found >= kTermsForRadius;
}

/// Whether the first term of a line is not 0, nor are as many of the last ones as tell how far its
/// series reaches: mostly.
bool ShowsFirstAndLast(std::span<const double> terms)
{
  if (terms.size() <= kTermsForRadius || !(terms[0] > -kInfinity)) return false;
  const std::span<const double> last = terms.last(kTermsForRadius);
  return std::ranges::all_of(last, [](double term) { return term > -kInfinity; });
}

/// log2 of the max over j < k of (tol |c_j| / |c_k|)^(1/(k-j)) for the last term c_k, with `first`
/// as term 0; above `enough` any of them will do.
double LongestFall(std::span<const double> terms, double first, double tolerance, double enough)
{
  const auto k = static_cast<double>(terms.size() - 1);
  const double tolerated = terms.back() - tolerance;
  double longest = first == -kInfinity ? -kInfinity : (first - tolerated) / k;
  if (longest > enough) return longest;
  double distance = k;
  for (const double term : terms.subspan(1, terms.size() - 2)) {
    distance -= 1;
    // A division takes longer than to see that most of them change nothing.
    if (!(term > tolerated + longest * distance)) continue;
    longest = std::max(longest, (term - tolerated) / distance);
    if (longest > enough) break;
  }
  return longest;
}

/// Whether none of the terms over a step (log2) is above the first two.
bool FallFromTheStart(std::span<const double> terms, double step)
{
  const double head = std::max(terms[0], terms[1] + step);
  const std::size_t end = std::min(terms.size(), kTermsBeforeTheFall);
  for (std::size_t k = 2; k < end; ++k) {
    if (terms[k] + static_cast<double>(k) * step > head) return false;
  }
  return true;
}

/// log2 of the factor by which steps become longer with the raised order, where terms fall evenly
double GainOfRaisedOrder(const RunSettings& settings)
{
  return settings.toleranceBits * (1.0 / settings.order - 1.0 / settings.raisedOrder);
}

/// Whether the terms of a line end by its structure before the usual order.
bool IsShortPolynomial(const Line& line, int order)
{
  return line.degree >= 0 && line.degree < order;
}

}  // namespace

StepControl::StepControl(const Tape& tape, const RunSettings& settings)
    : tape(tape),
      settings(settings),
      flatLines(tape.lines.size(), false),
      settledLines(tape.lines.size(), false),
      expectedLog2(kInfinity),
      order(settings.order),
      leftOut(tape.lines.size(), false)
{}

/// Whether a line shows too few terms, or, of one that begins with vanishing terms, less than the
/// usual order behind these.
bool StepControl::NeedsMoreTerms(const Series& series, LineId id) const
{
  if (IsShortPolynomial(tape.lines[id], series.Order() + 1)) return false;
  const std::span<const double> terms = series.Logs(id);
  if (!AreShown(terms)) return !settledLines[id];
  const int first = VanishingTerms(terms);
  return first > kMostVanishingTerms && series.Order() < first + settings.order;
}

/// The order up to which the terms of a line that vanish are followed. Where it is known by the
/// structure how far that is, as with t^1000 or sin(t)^1000, they are followed to their end:
/// however many they are, the line is not 0.
int StepControl::MostOrder(const Series& series, LineId id) const
{
  const int usual = kMostOrderFactor * settings.order, degree = tape.lines[id].degree;
  if (degree > usual && degree <= kMostKnownOrder) return degree;
  const std::optional<int> first = LeadingTerms(tape, series)[id];
  const int needed = first && *first <= kMostKnownOrder ? *first + settings.order : 0;
  return std::max(usual, needed);
}

/// Raises the order until every line shows enough terms, or to the highest. A line that shows none
/// even there is taken for what it seems in the steps that follow, until it moves.
void StepControl::ExtendFlatLines(Series& series)
{
  if (!isWhole) stillLines = StillLines(tape, leftOut);
  const std::vector<bool>& still = isWhole ? leftOut : stillLines;
  bool allShown = isWhole;
  for (LineId id = 0; id < tape.lines.size(); ++id) {
    if (ShowsFirstAndLast(series.Logs(id))) continue;
    allShown = false;
    if (still[id] || !NeedsMoreTerms(series, id)) continue;
    const int most = MostOrder(series, id);
    while (series.Order() < most && NeedsMoreTerms(series, id))
      series.ExtendTo(std::min(most, series.Order() + std::max(4, settings.order / 4)));
  }
  if (allShown) {
    flatLines.assign(flatLines.size(), false);
    return;
  }
  for (LineId id = 0; id < tape.lines.size(); ++id)
    flatLines[id] = still[id] ? settledLines[id] : !AreShown(series.Logs(id));
}

/// log2 of the longest step for which the terms of a line fall as they should: the least over its
/// last orders k of  max over j < k of (tol |c_j| / |c_k|)^(1/(k-j)) * tol^(1/p - 1/k), where k
/// counts from the first term that is not 0 in a flat line. A bound that is known is lowered so.
double StepControl::AccuracyBound(const Series& series, LineId id, double known) const
{
  const std::span<const double> terms = series.Logs(id);
  const double tolerance = -settings.toleranceBits;
  const double usual = 1.0 / order;
  // What rounding leaves of the line is no smaller than this, whatever its first term is.
  const double rounding = sizes[id] - static_cast<double>(settings.bits);
  const double resolution = series.Resolution(id), rise = series.ResolutionRise();
  const double first = std::max(terms[0], rounding);

  const int leading = VanishingTerms(terms);
  const int begin = leading > kMostVanishingTerms ? leading : 0;

  // Terms that are few and early say nothing, as in sqrt((1 - t)^2) = 1 - t: like a polynomial that
  // is one by its structure, it reaches anywhere.
  const int last = static_cast<int>(terms.size()) - 1;
  const int least = AreShown(terms) ? 0 : last / 2;

  double lowest = known;
  int found = 0, foundAboveNoise = 0;
  for (int k = last; k > least && foundAboveNoise < kTermsForRadius; --k) {
    if (terms[k] == -kInfinity) continue;
    // Where the last terms are rounding, those of the latter half that are more count as well.
    const bool isNoise = terms[k] <= std::max(rounding, resolution + k * rise) + kNoiseBits;
    if (found >= kTermsForRadius && (isNoise || k <= last / 2)) continue;
    ++found;
    if (!isNoise) ++foundAboveNoise;
    // Mostly term 0 alone allows more than what is known, which shows without a division.
    if (begin == 0 &&
        first + tolerance - terms[k] > k * lowest - tolerance * (k * usual - 1) + kClearly)
      continue;
    const double atOrder = tolerance * (usual - 1.0 / (k - begin));
    const double longest = LongestFall(terms.first(k + 1), first, tolerance, lowest - atOrder);
    // The first of all terms that are not zero says nothing by itself.
    if (longest == -kInfinity) continue;
    lowest = std::min(lowest, longest + atOrder);
  }
  return lowest;
}

/// Whether a line has a say in the step chosen last.
bool StepControl::Counts(const Series& series, LineId id) const
{
  return !leftOut[id] && !IsShortPolynomial(tape.lines[id], series.Order() + 1);
}

double StepControl::StepMade(const Series& series, long scaleExponent, double lengthLog2)
{
  settledLines = flatLines;
  if (order == settings.order) return Expect(series, scaleExponent, lengthLog2);
  expectedLog2 = lengthLog2;
  return lengthLog2;
}

double StepControl::Expect(const Series& series, long scaleExponent, double lengthLog2)
{
  expectedLog2 = lengthLog2 + GainOfRaisedOrder(settings);
  const double step = expectedLog2 - static_cast<double>(scaleExponent);
  return TermsFall(series, step) ? expectedLog2 : lengthLog2;
}

/// Whether the terms of all states fall from the start over a step (log2, in units of the scale).
bool StepControl::TermsFall(const Series& series, double step) const
{
  if (step == kInfinity) return false;
  for (LineId id = 0; id < tape.rightHandSides.size(); ++id) {
    if (!FallFromTheStart(series.Logs(id), step)) return false;
  }
  return true;
}

StepBound StepControl::Choose(Series& series, const std::vector<bool>& linesLeftOut,
                              long scaleExponent)
{
  const bool wasWhole = isWhole;
  isWhole = std::ranges::find(linesLeftOut, true) == linesLeftOut.end();
  if (!isWhole || !wasWhole) leftOut = linesLeftOut;
  series.ExtendTo(settings.order);
  const double expected = expectedLog2 - static_cast<double>(scaleExponent);
  order = TermsFall(series, expected) ? settings.raisedOrder : settings.order;
  series.ExtendTo(order);
  ExtendFlatLines(series);
  sizes = isWhole ? LineSizes(tape, series) : LineSizes(tape, series, leftOut);
  FindBound(series);
  if (order > settings.order && !TermsFall(series, bound.log2)) {
    // The step is longer than was expected.
    order = settings.order;
    FindBound(series);
  }
  return bound;
}

void StepControl::FindBound(const Series& series)
{
  const LineId likely = bound.line;
  bound = {kInfinity, kNone};
  // Beside the line that sets it most others are soon left.
  if (likely != kNone) LowerBound(series, likely);
  for (LineId id = 0; id < tape.lines.size(); ++id) {
    if (id != likely) LowerBound(series, id);
  }
}

/// Lowers the bound to what a line allows. Of several that allow the same the first one sets it.
void StepControl::LowerBound(const Series& series, LineId id)
{
  if (!Counts(series, id)) return;
  const double known = id < bound.line ? std::nextafter(bound.log2, kInfinity) : bound.log2;
  const double log2 = AccuracyBound(series, id, known);
  if (log2 < known) bound = {log2, id};
}

std::vector<double> StepControl::LineBounds(const Series& series) const
{
  std::vector<double> bounds(tape.lines.size(), kInfinity);
  for (LineId id = 0; id < bounds.size(); ++id) {
    if (Counts(series, id)) bounds[id] = AccuracyBound(series, id, kInfinity);
  }
  return bounds;
}

}  // namespace varno::solve
