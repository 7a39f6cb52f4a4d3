#include "arith/convolution.h"

#include "arith/limb_accumulator.h"
#include "arith/scratch.h"

namespace arith {

namespace {

template <int kLimbs>
void ConvolveByLimbs(mpf_t& sum, mpf_srcptr ascending, mpf_srcptr descending, int count)
{
  LimbAccumulator<kLimbs> accumulator;
  for (int i = 0; i < count; ++i) {
    if (accumulator.AddProduct(ascending + i, descending - i)) continue;
    Mpf& product = Scratch();
    accumulator.Store(sum);
    mpf_mul(product, ascending + i, descending - i);
    mpf_add(sum, sum, product);
    accumulator.Load(sum);
  }
  accumulator.Store(sum);
}

void ConvolveByGmp(mpf_t& sum, mpf_srcptr ascending, mpf_srcptr descending, int count)
{
  Mpf& product = Scratch();
  mpf_set_ui(sum, 0);
  for (int i = 0; i < count; ++i) {
    mpf_mul(product, ascending + i, descending - i);
    mpf_add(sum, sum, product);
  }
}

}  // namespace

void Convolve(mpf_t& sum, mpf_srcptr ascending, mpf_srcptr descending, int count)
{
  if (count == 1) {
    mpf_mul(sum, ascending, descending);
    return;
  }
  switch (sum->_mp_prec) {
    case 2:
      ConvolveByLimbs<2>(sum, ascending, descending, count);
      break;
    case 3:
      ConvolveByLimbs<3>(sum, ascending, descending, count);
      break;
    case 4:
      ConvolveByLimbs<4>(sum, ascending, descending, count);
      break;
    case 5:
      ConvolveByLimbs<5>(sum, ascending, descending, count);
      break;
    default:
      ConvolveByGmp(sum, ascending, descending, count);
  }
}

}  // namespace arith
