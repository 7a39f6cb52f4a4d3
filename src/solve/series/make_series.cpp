#include "solve/fixed/narrow.h"
#include "solve/series/block_series.h"

namespace varno::solve {

std::unique_ptr<Series> MakeSeries(const Tape& tape, mpfr_prec_t bits, int usualOrder,
                                   bool disturbed)
{
  if (bits <= NarrowArithmetic::kMostBits)
    return std::make_unique<BlockSeries<NarrowArithmetic>>(tape, bits, usualOrder, disturbed);
  return std::make_unique<MpfrSeries>(tape, bits, usualOrder, disturbed);
}

}  // namespace varno::solve
