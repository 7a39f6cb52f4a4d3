#include <utility>

#include "solve/fixed/long.h"
#include "solve/fixed/narrow.h"
#include "solve/fixed/wide.h"
#include "solve/series/block_series.h"

namespace varno::solve {

std::unique_ptr<Series> MakeSeries(const Tape& tape, mpfr_prec_t bits, int usualOrder,
                                   bool disturbed, const Poll& poll, std::shared_ptr<Team> team)
{
  const auto make = [&]<class Arithmetic>() -> std::unique_ptr<Series> {
    return std::make_unique<BlockSeries<Arithmetic>>(tape, bits, usualOrder, disturbed, poll,
                                                     std::move(team));
  };
  if (bits <= NarrowArithmetic::kMostBits) return make.operator()<NarrowArithmetic>();
  if (bits <= WideArithmetic<8>::kMostBits) return make.operator()<WideArithmetic<8>>();
  if (bits <= WideArithmetic<24>::kMostBits) return make.operator()<WideArithmetic<24>>();
  if (bits <= WideArithmetic<42>::kMostBits) return make.operator()<WideArithmetic<42>>();
  return make.operator()<LongArithmetic>();
}

mpfr_prec_t MostBitsAsCheapAs(mpfr_prec_t bits)
{
  using Wide = WideArithmetic<42>;
  if (bits <= NarrowArithmetic::kMostBits) return NarrowArithmetic::kMostBits;
  if (bits <= Wide::kMostBits) return Wide::MostBitsWith(Wide::DigitsFor(bits));
  return bits;
}

std::unique_ptr<Series> MakeSeriesAtRoot(const Tape& tape, mpfr_prec_t bits, int usualOrder,
                                         bool disturbed, const std::vector<CommonRoot>& roots,
                                         Poll poll)
{
  return std::make_unique<MpfrSeries>(tape, bits, usualOrder, disturbed, std::move(poll), roots);
}

}  // namespace varno::solve
