#include "solve/verification/attempt.h"

#include <algorithm>
#include <utility>

namespace varno::solve {

namespace {

/// Columns are computed from the states with this many bits more.
constexpr mpfr_prec_t kColumnGuardBits = 64;

/// How many bits the larger of two times takes before the point. Not by a double: times go further.
mpfr_prec_t WholeBits(const Interval& interval)
{
  mpfr_prec_t bits = 0;
  Real time(53);
  for (const Moment* moment : {&interval.from, &interval.to}) {
    moment->Evaluate(time);
    if (!time.IsZero()) bits = std::max<mpfr_prec_t>(bits, mpfr_get_exp(time));
  }
  return bits;
}

/// An argument is on an edge where it is a zero by its size, and where rounding may have made it.
EdgeRule EdgesOf(const RunSettings& settings, int digits)
{
  return {.noiseBits = settings.toleranceBits - kNoiseDecimals * kLog2Of10,
          .zeroBits = (digits + kZeroGuardDigits) * kLog2Of10,
          .mayDeclareZero = settings.mayDeclareZero};
}

std::vector<ColumnValues> MakeColumnValues(const Model& model, const std::vector<NodeId>& columns,
                                           int digits, const Path::Problem& problem)
{
  std::vector<ColumnValues> values;
  for (const RunSettings& settings : problem.settings) {
    const mpfr_prec_t bits = settings.bits + kColumnGuardBits + WholeBits(problem.interval);
    values.emplace_back(model.graph, columns, bits, EdgesOf(settings, digits));
  }
  return values;
}

}  // namespace

Attempt::Attempt(const Model& model, const std::vector<NodeId>& columns, int digits,
                 Path::Problem problem, const std::vector<Moment>& early)
    : columnValues(MakeColumnValues(model, columns, digits, problem)),
      path(std::move(problem), early)
{}

std::vector<std::vector<SizedNumber>> Attempt::RowAt(const Moment& time)
{
  return RowOf(time, path.StatesAt(time));
}

std::vector<std::vector<SizedNumber>> Attempt::RowOf(const Moment& time,
                                                     const std::vector<SizedStates>& states)
{
  std::vector<std::vector<SizedNumber>> row;
  for (std::size_t i = 0; i < states.size(); ++i)
    row.push_back(columnValues[i].At(time, states[i]));
  return row;
}

std::vector<std::vector<SizedNumber>> Attempt::RowAtEvent(const Lockstep::Switches& switches,
                                                          std::size_t event)
{
  std::vector<std::vector<SizedNumber>> row;
  for (std::size_t i = 0; i < switches.size(); ++i) {
    const EventFired& fired = switches[i]->events[event];
    row.push_back(columnValues[i].At(switches[i]->time, {fired.states, fired.sizes}));
  }
  return row;
}

std::vector<std::vector<SizedNumber>> Attempt::RowBehind(const Lockstep::Switches& switches)
{
  std::vector<std::vector<SizedNumber>> row;
  for (std::size_t i = 0; i < switches.size(); ++i) {
    const Switch& what = *switches[i];
    row.push_back(columnValues[i].At(what.time, {what.states, what.sizes}));
  }
  return row;
}

}  // namespace varno::solve
