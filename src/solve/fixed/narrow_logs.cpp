#include "solve/fixed/narrow_logs.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <limits>

#include "solve/fixed/log2.h"

#if defined(__x86_64__)
#include "solve/fixed/log2_avx2.h"
#endif

namespace varno::solve::narrow {

namespace {

constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr long kFractionBits = 2L * kDigitBits;

}  // namespace

double FindLogsSingly(const NarrowTerms& terms, int first, std::span<double> logs)
{
  const std::uint8_t* const exactZero = terms.exactZero.data() + first;
  const std::int64_t *const high = terms.high.data() + first, *const low = terms.low.data() + first;
  const long unit = terms.exponent - kFractionBits;
  double largest = -kInfinity;
  for (std::size_t k = 0; k < logs.size(); ++k) {
    const double size =
        std::abs(static_cast<double>(high[k]) * 0x1p60 + static_cast<double>(low[k]));
    logs[k] = exactZero[k] != 0 ? -kInfinity : FastLog2(std::max(size, 1.0), unit);
    largest = std::max(largest, logs[k]);
  }
  return largest;
}

#if defined(__x86_64__)

namespace {

using avx2::FastLogs;

constexpr std::size_t kLanes = 4;

/// To nearest: in the sum of two doubles, one of which has the upper 16 bits at the place of 2^48
/// in its bit pattern, beside 3 2^67, and the other one the lower 48 bits beside 2^52.
[[gnu::target("avx2")]] inline __m256d ToDoubles(__m256i x)
{
  const __m256i shifted =
      _mm256_blend_epi16(_mm256_srai_epi32(x, 16), _mm256_setzero_si256(), 0x33);
  const __m256i upper = _mm256_add_epi64(shifted, _mm256_castpd_si256(_mm256_set1_pd(0x1.8p68)));
  const __m256i lower = _mm256_blend_epi16(x, _mm256_castpd_si256(_mm256_set1_pd(0x1p52)), 0x88);
  const __m256d rest = _mm256_sub_pd(_mm256_castsi256_pd(upper), _mm256_set1_pd(0x1.8p68 + 0x1p52));
  return _mm256_add_pd(rest, _mm256_castsi256_pd(lower));
}

[[gnu::target("avx2")]] inline __m256i Load(const std::int64_t* x)
{
  return _mm256_loadu_si256(reinterpret_cast<const __m256i*>(x));
}

/// At least four.
[[gnu::target("avx2")]] double FindLogsByVectors(const NarrowTerms& terms, int first,
                                                 std::span<double> logs)
{
  const std::uint8_t* const exactZero = terms.exactZero.data() + first;
  const std::int64_t *const high = terms.high.data() + first, *const low = terms.low.data() + first;
  const __m256i shift = _mm256_set1_epi64x(terms.exponent - kFractionBits - 1023);
  const __m256d signs = _mm256_set1_pd(-0.0);
  __m256d largest = _mm256_set1_pd(-kInfinity);
  for (std::size_t begin = 0; begin < logs.size(); begin += kLanes) {
    // The last ones again where they are fewer.
    const std::size_t k = std::min(begin, logs.size() - kLanes);
    const __m256d highs = _mm256_mul_pd(ToDoubles(Load(high + k)), _mm256_set1_pd(0x1p60));
    const __m256d sizes = _mm256_andnot_pd(signs, _mm256_add_pd(highs, ToDoubles(Load(low + k))));
    const __m256d found = FastLogs(_mm256_max_pd(sizes, _mm256_set1_pd(1)), shift);
    const __m256i zeros = _mm256_cvtepu8_epi64(_mm_loadu_si32(exactZero + k));
    const __m256i shown = _mm256_cmpeq_epi64(zeros, _mm256_setzero_si256());
    const __m256d result =
        _mm256_blendv_pd(_mm256_set1_pd(-kInfinity), found, _mm256_castsi256_pd(shown));
    _mm256_storeu_pd(logs.data() + k, result);
    largest = _mm256_max_pd(largest, result);
  }
  const __m128d pair =
      _mm_max_pd(_mm256_castpd256_pd128(largest), _mm256_extractf128_pd(largest, 1));
  return std::max(_mm_cvtsd_f64(pair), _mm_cvtsd_f64(_mm_unpackhi_pd(pair, pair)));
}

}  // namespace

double FindLogs(const NarrowTerms& terms, int first, std::span<double> logs)
{
  static const bool hasVectors = __builtin_cpu_supports("avx2") != 0;
  return hasVectors && logs.size() >= kLanes ? FindLogsByVectors(terms, first, logs)
                                             : FindLogsSingly(terms, first, logs);
}

#else

double FindLogs(const NarrowTerms& terms, int first, std::span<double> logs)
{
  return FindLogsSingly(terms, first, logs);
}

#endif

}  // namespace varno::solve::narrow
