#include "solve/fixed/wide_logs.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <limits>

#include "solve/fixed/log2.h"

#if defined(__x86_64__)
#include "solve/fixed/log2_avx2.h"
#endif

namespace varno::solve::wide {

namespace {

constexpr double kInfinity = std::numeric_limits<double>::infinity();
/// Of so many terms at a time: the sizes x 2^shift of those that are not exactly 0.
constexpr std::size_t kAtOnce = 64;
struct Sizes {
  std::array<double, kAtOnce> x;
  std::array<std::int64_t, kAtOnce> shifts;
};

/// By the first two digits of each term, or a unit where it has none.
void SetSizes(Sizes& sizes, const WideTerms& terms, int first, std::size_t count)
{
  const int* const leading = &terms.leading[first];
  const double* row = terms.Row(first);
  for (std::size_t k = 0; k < count; ++k, row += terms.stride) {
    const int i = leading[k];
    const bool isSeen = i < terms.n;
    sizes.x[k] = isSeen ? std::abs(row[i] + row[i + 1] * 0x1p-51) : 1;
    sizes.shifts[k] = kWideDigitBits * (terms.exponent - i - (isSeen ? 1 : 0));
  }
}

using FindAll = void (*)(const Sizes& sizes, std::span<double> logs);

double FindLogsBy(FindAll findAll, const WideTerms& terms, int first, std::span<double> logs)
{
  double largest = -kInfinity;
  while (!logs.empty()) {
    const std::size_t count = std::min(logs.size(), kAtOnce);
    Sizes sizes;
    SetSizes(sizes, terms, first, count);
    findAll(sizes, logs.first(count));
    for (std::size_t k = 0; k < count; ++k) {
      if (terms.IsExactZero(first + static_cast<int>(k))) logs[k] = -kInfinity;
      largest = std::max(largest, logs[k]);
    }
    logs = logs.subspan(count);
    first += static_cast<int>(count);
  }
  return largest;
}

void FindSingly(const Sizes& sizes, std::span<double> logs)
{
  for (std::size_t k = 0; k < logs.size(); ++k) logs[k] = FastLog2(sizes.x[k], sizes.shifts[k]);
}

}  // namespace

double FindLogsSingly(const WideTerms& terms, int first, std::span<double> logs)
{
  return FindLogsBy(FindSingly, terms, first, logs);
}

#if defined(__x86_64__)

namespace {

[[gnu::target("avx2")]] void FindByVectors(const Sizes& sizes, std::span<double> logs)
{
  constexpr std::size_t kLanes = 4;
  const __m256i bias = _mm256_set1_epi64x(1023);
  std::size_t k = 0;
  for (; k + kLanes <= logs.size(); k += kLanes) {
    const __m256i shifts = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(&sizes.shifts[k]));
    const __m256d found =
        avx2::FastLogs(_mm256_loadu_pd(&sizes.x[k]), _mm256_sub_epi64(shifts, bias));
    _mm256_storeu_pd(&logs[k], found);
  }
  for (; k < logs.size(); ++k) logs[k] = FastLog2(sizes.x[k], sizes.shifts[k]);
}

}  // namespace

double FindLogs(const WideTerms& terms, int first, std::span<double> logs)
{
  static const bool hasVectors = __builtin_cpu_supports("avx2") != 0;
  return FindLogsBy(hasVectors ? FindByVectors : FindSingly, terms, first, logs);
}

#else

double FindLogs(const WideTerms& terms, int first, std::span<double> logs)
{
  return FindLogsSingly(terms, first, logs);
}

#endif

}  // namespace varno::solve::wide
