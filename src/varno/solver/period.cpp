#include "varno/solver/period.h"

#include <iostream>

#include "arith/magnitude.h"
#include "arith/scratch.h"
#include "varno/core/global_data.h"
#include "varno/sys/messages.h"
#include "varno/sys/signals.h"

namespace varno {

using arith::Magnitude;
using arith::Scratch;

PeriodSamples::PeriodSamples(int bufferSize) : bufferSize(bufferSize) {}

bool PeriodSamples::Repeats(mpf_srcptr y)
{
  Mpf& distance = Scratch();
  for (Sample& sample : samples) {
    mpf_sub(distance, sample.value, y);
    if (mpf_cmp(Magnitude(distance), Expr::Global->_ACCURACY) >= 0) continue;
    ++sample.hits;
    return &sample == &samples.back() && AllHitEquallyOften();
  }
  if (static_cast<long>(samples.size()) < long{bufferSize} - 1) samples.push_back({Mpf(y), 0});
  return false;
}

bool PeriodSamples::AllHitEquallyOften() const
{
  for (const Sample& sample : samples) {
    if (sample.hits != samples.front().hits) return false;
  }
  return true;
}

PeriodWatch::PeriodWatch() : samples(Expr::Global->_PERIODBUF) {}

void PeriodWatch::Arm()
{
  if (Expr::Global->_PERIODSAME <= 0) return;
  const auto entry = Expr::Global->_EQUATIONS.find(Expr::Global->_PERIODEQ);
  if (entry == Expr::Global->_EQUATIONS.end()) {
    Expr::Global->_PERIODSAME = 0;
    std::clog << tag::kWarning << "Equation " << Expr::Global->_PERIODEQ
              << " doesn't exist. The period. detection is disabled.\n"
              << std::flush;
    return;
  }
  watched = entry->second;
  // Intended: a watch with room for samples ends in this signal, before the first pass. Only a
  // watch with a buffer size of 0 or 1, which has none, runs.
  if (Expr::Global->_PERIODBUF > 1) RaiseSegmentationFault();
}

bool PeriodWatch::FindsPeriod()
{
  if (Expr::Global->_PERIODSAME < 1) return false;
  if (watchedDerivative.IsEmpty()) watchedDerivative = watched->Derivative();
  const Mpf& accuracy = Expr::Global->_ACCURACY;
  const mpf_srcptr derivative = watchedDerivative->Value();
  Mpf& distance = Scratch();
  mpf_sub(distance, derivative, accuracy);
  if (mpf_cmp(Magnitude(distance), accuracy) > 0) return false;
  return samples.Repeats(watched->Value());
}

}  // namespace varno
