#include "solve/fixed/narrow.h"
#include "solve/fixed/wide.h"
#include "solve/series/block_series.h"

namespace varno::solve {

namespace {

template <class Arithmetic>
std::unique_ptr<Series> MakeBlockSeries(const Tape& tape, mpfr_prec_t bits, int usualOrder,
                                        bool disturbed)
{
  return std::make_unique<BlockSeries<Arithmetic>>(tape, bits, usualOrder, disturbed);
}

}  // namespace

std::unique_ptr<Series> MakeSeries(const Tape& tape, mpfr_prec_t bits, int usualOrder,
                                   bool disturbed)
{
  if (bits <= NarrowArithmetic::kMostBits)
    return MakeBlockSeries<NarrowArithmetic>(tape, bits, usualOrder, disturbed);
  if (bits <= WideArithmetic<8>::kMostBits)
    return MakeBlockSeries<WideArithmetic<8>>(tape, bits, usualOrder, disturbed);
  if (bits <= WideArithmetic<24>::kMostBits)
    return MakeBlockSeries<WideArithmetic<24>>(tape, bits, usualOrder, disturbed);
  if (bits <= WideArithmetic<64>::kMostBits)
    return MakeBlockSeries<WideArithmetic<64>>(tape, bits, usualOrder, disturbed);
  return std::make_unique<MpfrSeries>(tape, bits, usualOrder, disturbed);
}

}  // namespace varno::solve
