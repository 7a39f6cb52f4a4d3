#include "solve/verification/loss.h"

#include <algorithm>
#include <cmath>
#include <numeric>

namespace varno::solve {

namespace {

/// When so many samples are kept, every other one is dropped.
constexpr std::size_t kMostSamples = 4096;
/// Fewer samples say nothing about what is ahead.
constexpr std::size_t kFewestSamples = 8;
/// The latter half of the way is looked at in so many pieces.
constexpr int kPieces = 8;
/// Of a loss that grows evenly along the way, half is lost in its latter half; of one that grows by
/// the same amount with each doubling of the way, little.
constexpr double kPartOfEvenLoss = 0.3;
/// A loss of so many decimals is no accident.
constexpr double kSteadyDecimals = 6;
/// Steps that are so much shorter than those that follow have led onto a singularity.
constexpr double kSingular = 1e-6;

}  // namespace

void Loss::Add(double distance, double decimals)
{
  if (!samples.empty()) decimals = std::max(decimals, latest.decimals);
  if (!std::isfinite(decimals)) return;
  // Behind a singularity that the way leads onto, the first long step tells what was lost there.
  const double length = distance - latest.distance;
  if (samples.size() > 1 && skipped == 0 && latestLength < kSingular * length)
    samples.back().decimals = decimals;
  latestLength = length;
  latest = {distance, decimals};
  if (samples.empty() || ++skipped == stride) Keep();
}

void Loss::Keep()
{
  samples.push_back(latest);
  skipped = 0;
  if (samples.size() < kMostSamples) return;
  std::size_t kept = 0;
  for (std::size_t i = 0; i < samples.size(); i += 2) samples[kept++] = samples[i];
  samples.resize(kept);
  stride *= 2;
}

double Loss::SoFar() const
{
  return samples.empty() ? 0 : latest.decimals - samples.front().decimals;
}

/// The difference at a distance on the way: that of the latest sample before it.
double Loss::At(double distance) const
{
  if (distance >= latest.distance) return latest.decimals;
  const auto behind = std::ranges::upper_bound(samples, distance, {}, &Sample::distance);
  return behind == samples.begin() ? samples.front().decimals : std::prev(behind)->decimals;
}

/// What the latter half of the way has cost, without the piece that has cost most: that may have
/// been an encounter, which does not come again.
double Loss::LatterHalf() const
{
  const double end = latest.distance;
  std::vector<double> pieces;
  for (int i = 0; i < kPieces; ++i) {
    const double begin = end * (0.5 + 0.5 * i / kPieces);
    pieces.push_back(At(begin + 0.5 * end / kPieces) - At(begin));
  }
  const double sum = std::accumulate(pieces.begin(), pieces.end(), 0.0);
  return (sum - std::ranges::max(pieces)) * kPieces / (kPieces - 1);
}

bool Loss::IsExponential() const
{
  return LatterHalf() > kPartOfEvenLoss * SoFar();
}

bool Loss::IsSteady() const
{
  return samples.size() >= kFewestSamples && SoFar() >= kSteadyDecimals && IsExponential();
}

double Loss::Ahead(double distance) const
{
  if (samples.size() < kFewestSamples) return 0;
  const double end = latest.distance;
  if (!(distance > end) || end == 0) return 0;
  const double half = LatterHalf(), times = distance / end;
  return IsExponential() ? 2 * half * (times - 1) : half * std::log2(times);
}

}  // namespace varno::solve
