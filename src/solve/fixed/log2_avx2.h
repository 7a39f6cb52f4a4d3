#pragma once

// Logarithms of four numbers at a time, for narrow_logs.cpp and wide_logs.cpp only.

#include <immintrin.h>

#include "solve/fixed/log2.h"

namespace varno::solve::avx2 {

/// To doubles, |x| < 2^51.
[[gnu::target("avx2")]] inline __m256d SmallToDoubles(__m256i x)
{
  const __m256d middle = _mm256_set1_pd(0x1.8p52);
  return _mm256_sub_pd(_mm256_castsi256_pd(_mm256_add_epi64(x, _mm256_castpd_si256(middle))),
                       middle);
}

/// FastLog2 of four numbers, operation by operation.
[[gnu::target("avx2")]] inline __m256d FastLogs(__m256d x, __m256i shift)
{
  const __m256i pattern = _mm256_castpd_si256(x);
  const __m256d one = _mm256_set1_pd(1);
  const __m256d above1 = _mm256_or_pd(
      _mm256_and_pd(x, _mm256_castsi256_pd(_mm256_set1_epi64x(0x000FFFFFFFFFFFFF))), one);
  const __m256d isLarge = _mm256_cmp_pd(above1, _mm256_set1_pd(kRootOf2), _CMP_GT_OQ);
  const __m256d m = _mm256_blendv_pd(above1, _mm256_mul_pd(_mm256_set1_pd(0.5), above1), isLarge);
  const __m256d s = _mm256_div_pd(_mm256_sub_pd(m, one), _mm256_add_pd(m, one));
  const __m256d square = _mm256_mul_pd(s, s);
  const auto& [a, b, c, d, e] = kLog2Terms;
  __m256d sum = _mm256_add_pd(_mm256_set1_pd(d), _mm256_mul_pd(square, _mm256_set1_pd(e)));
  sum = _mm256_add_pd(_mm256_set1_pd(c), _mm256_mul_pd(square, sum));
  sum = _mm256_add_pd(_mm256_set1_pd(b), _mm256_mul_pd(square, sum));
  sum = _mm256_add_pd(_mm256_set1_pd(a), _mm256_mul_pd(square, sum));
  // Where it is true, it is -1.
  const __m256i exponent = _mm256_sub_epi64(_mm256_add_epi64(_mm256_srli_epi64(pattern, 52), shift),
                                            _mm256_castpd_si256(isLarge));
  return _mm256_add_pd(SmallToDoubles(exponent), _mm256_mul_pd(s, sum));
}

}  // namespace varno::solve::avx2
