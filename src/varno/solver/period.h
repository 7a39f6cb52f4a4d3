#pragma once

#include <vector>

#include "arith/mpf.h"
#include "varno/core/expr.h"

namespace varno {

using arith::Mpf;

/// The samples of a watched value, with the number of times that each came back.
class PeriodSamples {
 public:
  /// Room for `bufferSize` - 1 samples: one entry is never used. A negative size counts as 0.
  explicit PeriodSamples(int bufferSize);

  /// Takes a value. Returns true when it repeats, within `_ACCURACY`, the latest sample and every
  /// sample has come back equally often; a value that repeats none becomes a sample while there is
  /// room.
  bool Repeats(mpf_srcptr y);

 private:
  struct Sample {
    Mpf value;
    int hits = 0;
  };

  bool AllHitEquallyOften() const;

  int bufferSize;
  std::vector<Sample> samples;
};

/// Ends the integration when the equation `_PERIODEQ` keeps coming back to the same values. It is
/// on while `_PERIODSAME` is above 0.
class PeriodWatch {
 public:
  PeriodWatch();

  /// To be called once, before the loop. An equation that does not exist switches the watch off
  /// with a warning. On purpose a buffer size above 1 ends the process with a segmentation fault.
  void Arm();

  /// The test of one pass. On purpose it compares the watched derivative with the accuracy, not
  /// with the derivative value that the user gave.
  bool FindsPeriod();

 private:
  PeriodSamples samples;
  Expr::Ref watched;
  Expr::Ref watchedDerivative;
};

}  // namespace varno
