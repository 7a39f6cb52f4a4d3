// The pieces: convolutions, elementary functions, number formatting.

#include <ostream>
#include <random>

#include <benchmark/benchmark.h>
#include <gmp.h>

#include "arith/convolution.h"
#include "arith/mpf.h"
#include "arith/term_array.h"
#include "bench/varno/null_buffer.h"
#include "varno/core/number_output.h"
#include "varno/functions/functions.h"

namespace varno {

using arith::Convolve;
using arith::Mpf;
using arith::TermArray;
namespace {

/// 1/3, 1/5, 1/7, ... with signs that follow no rule: digits in all limbs, sums and differences.
TermArray FullTerms(int count)
{
  std::minstd_rand random;
  TermArray terms(count - 1);
  for (int i = 0; i < count; ++i) {
    mpf_set_si(terms[i], random() % 2 == 0 ? 1 : -1);
    mpf_div_ui(terms[i], terms[i], static_cast<unsigned long>(2 * i + 3));
  }
  return terms;
}

void Convolution(benchmark::State& state)
{
  mpf_set_default_prec(static_cast<mp_bitcnt_t>(state.range(0)));
  const int count = static_cast<int>(state.range(1));
  const TermArray a = FullTerms(count);
  Mpf sum;
  for (auto _ : state) Convolve(sum, a[0], a[count - 1], count);
  state.SetItemsProcessed(state.iterations() * count);
}
BENCHMARK(Convolution)->ArgsProduct({{64, 80, 128, 256, 1024}, {35, 100}});

void ConvolutionByGmp(benchmark::State& state)
{
  mpf_set_default_prec(static_cast<mp_bitcnt_t>(state.range(0)));
  const int count = static_cast<int>(state.range(1));
  const TermArray a = FullTerms(count);
  Mpf sum, product;
  for (auto _ : state) {
    mpf_set_ui(sum, 0);
    for (int i = 0; i < count; ++i) {
      mpf_mul(product, a[i], a[count - 1 - i]);
      mpf_add(sum, sum, product);
    }
  }
  state.SetItemsProcessed(state.iterations() * count);
}
BENCHMARK(ConvolutionByGmp)->ArgsProduct({{64, 80, 128, 256, 1024}, {35, 100}});

void ElementaryFunction(benchmark::State& state, void (*function)(mpf_t&, mpf_ptr))
{
  mpf_set_default_prec(80);
  Mpf x(0.75), y;
  for (auto _ : state) function(y, x);
}
BENCHMARK_CAPTURE(ElementaryFunction, sin, functions::sin);
BENCHMARK_CAPTURE(ElementaryFunction, atan, functions::atan);
BENCHMARK_CAPTURE(ElementaryFunction, exp, functions::exp);
BENCHMARK_CAPTURE(ElementaryFunction, ln, functions::ln);

void NumberFormat(benchmark::State& state)
{
  mpf_set_default_prec(80);
  NullBuffer buffer;
  std::ostream out(&buffer);
  Mpf x(1.0);
  mpf_div_ui(x, x, 7);
  for (auto _ : state) out << x;
}
BENCHMARK(NumberFormat);

void NumberFormatGmpShare(benchmark::State& state)
{
  mpf_set_default_prec(80);
  Mpf x(1.0);
  mpf_div_ui(x, x, 7);
  char text[64];
  for (auto _ : state) {
    mp_exp_t exponent = 0;
    benchmark::DoNotOptimize(mpf_get_str(text, &exponent, 10, 18, x));
  }
}
BENCHMARK(NumberFormatGmpShare);

}  // namespace
}  // namespace varno
