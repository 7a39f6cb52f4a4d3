#include "solve/verification/row_schedule.h"

#include <utility>

namespace varno::solve {

namespace {

/// The events show the states there themselves. A row at that time would be on one side of them now
/// and on the other one with more digits, which find them elsewhere.
bool EndsInEvent(const DenseStep& step)
{
  return step.switched != nullptr && !step.switched->events.empty();
}

}  // namespace

RowSchedule::RowSchedule(const Interval& interval, RowTimes rowTimes)
    : interval(interval), times(std::move(rowTimes))
{
  while (std::optional<Moment> time = times->Next()) {
    waiting.push_back(*time);
    if (!interval.IsEarly(*time)) break;
    early.push_back(*time);
  }
}

RowSchedule::RowSchedule(const Interval& interval) : interval(interval), waiting{interval.from}
{
  if (!interval.IsEarly(interval.from)) return;
  early.push_back(interval.from);
  waiting.push_back(interval.IsEarly(interval.to) ? interval.to : interval.start);
  if (interval.IsEarly(interval.to)) early.push_back(interval.to);
}

void RowSchedule::Replay(std::size_t count, const std::function<Moment(std::size_t)>& timeOf)
{
  if (times) return;
  for (std::size_t row = waiting.size(); row < count; ++row) waiting.push_back(timeOf(row));
}

std::optional<Moment> RowSchedule::NextGiven()
{
  if (!waiting.empty()) {
    latest = waiting.front();
    waiting.pop_front();
    return latest;
  }
  return times->Next();
}

std::optional<Moment> RowSchedule::Next(Path& path)
{
  return IsOfSteps() && waiting.empty() ? NextStepEnd(path) : NextGiven();
}

std::optional<Moment> RowSchedule::NextStepEnd(Path& path)
{
  if (*latest == interval.to) return std::nullopt;
  do {
    const Moment end = path.NextStepEnd(*latest);
    const bool isBehind = interval.IsBackwards() ? end < interval.to : end > interval.to;
    latest = isBehind ? interval.to : end;
  } while (*latest != interval.to && EndsInEvent(path.Best()));
  return latest;
}

int RowSchedule::Width(const TimeFormat& format) const
{
  return times ? times->Width(format) : format.LongestRounded();
}

}  // namespace varno::solve
