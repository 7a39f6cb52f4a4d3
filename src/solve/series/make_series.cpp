#include <utility>

#include "solve/fixed/long.h"
#include "solve/fixed/narrow.h"
#include "solve/fixed/wide.h"
#include "solve/series/block_series.h"

namespace varno::solve {

namespace {

template <class Arithmetic>
std::unique_ptr<Series> MakeBlockSeries(const Tape& tape, mpfr_prec_t bits, int usualOrder,
                                        bool disturbed, Poll poll)
{
  return std::make_unique<BlockSeries<Arithmetic>>(tape, bits, usualOrder, disturbed,
                                                   std::move(poll));
}

}  // namespace

std::unique_ptr<Series> MakeSeries(const Tape& tape, mpfr_prec_t bits, int usualOrder,
                                   bool disturbed, Poll poll)
{
  if (bits <= NarrowArithmetic::kMostBits)
    return MakeBlockSeries<NarrowArithmetic>(tape, bits, usualOrder, disturbed, std::move(poll));
  if (bits <= WideArithmetic<8>::kMostBits)
    return MakeBlockSeries<WideArithmetic<8>>(tape, bits, usualOrder, disturbed, std::move(poll));
  if (bits <= WideArithmetic<24>::kMostBits)
    return MakeBlockSeries<WideArithmetic<24>>(tape, bits, usualOrder, disturbed, std::move(poll));
  if (bits <= WideArithmetic<42>::kMostBits)
    return MakeBlockSeries<WideArithmetic<42>>(tape, bits, usualOrder, disturbed, std::move(poll));
  return MakeBlockSeries<LongArithmetic>(tape, bits, usualOrder, disturbed, std::move(poll));
}

std::unique_ptr<Series> MakeSeriesAtRoot(const Tape& tape, mpfr_prec_t bits, int usualOrder,
                                         bool disturbed, const std::vector<CommonRoot>& roots,
                                         Poll poll)
{
  return std::make_unique<MpfrSeries>(tape, bits, usualOrder, disturbed, std::move(poll), roots);
}

}  // namespace varno::solve
