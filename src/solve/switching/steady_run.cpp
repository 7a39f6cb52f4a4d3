#include "solve/switching/steady_run.h"

#include <optional>
#include <utility>
#include <vector>

#include "solve/evaluation/size.h"

namespace varno::solve {

SteadyRun::SteadyRun(std::unique_ptr<Stepper> given, Calm calm)
    : run(std::move(given)), calm(std::move(calm)), latest(run->Latest())
{}

void SteadyRun::Step()
{
  if (latest.switched && latest.switched->stops) throw StoppedByEvent{latest.end};
  latest.series = nullptr;
  run->Step();
  latest = run->Latest();
  if (const std::optional<Moment> rest = calm.Add(latest)) StopAt(*rest);
}

/// Ends the latest step at a time within it.
void SteadyRun::StopAt(const Moment& time)
{
  Switch what{.time = time,
              .events = {},
              .signature = {},
              .states = latest.StatesAt(time),
              .sizes = latest.stateSizes};
  if (time == latest.end && latest.switched) what = *latest.switched;
  what.stops = what.isRest = true;
  latest.end = time;
  latest.lengthLog2 = Log2Size(time - latest.begin);
  latest.states = what.states;
  latest.switched = std::make_shared<const Switch>(std::move(what));
}

MakeStepper StoppingAtRest(MakeStepper make, const Interval& interval, double log2Tolerance)
{
  return [make = std::move(make), interval, log2Tolerance](
             const RunSettings& settings, const Moment& start, std::vector<Real> states,
             const Moment& reach, Poll poll) -> std::unique_ptr<Stepper> {
    auto run = make(settings, start, std::move(states), reach, std::move(poll));
    if (reach != interval.to) return run;
    return std::make_unique<SteadyRun>(std::move(run), Calm(start, reach, log2Tolerance));
  };
}

}  // namespace varno::solve
