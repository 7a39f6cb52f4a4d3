#include "solve/switching/watch_list.h"

#include "solve/piecewise/time_forms.h"

namespace varno::solve {

WatchList::WatchList(const Piece& piece)
{
  TimeForms forms(piece.model.graph);
  const auto add = [&](const Watched& watched, bool isEvent, std::size_t index) {
    if (!watched.time) {
      lines.push_back({isEvent, index, watched.line});
      return;
    }
    const int slope = sgn(forms.Of(watched.expression)->slope);
    times.push_back({isEvent, index, Moment(*watched.time), slope});
  };
  for (std::size_t i = 0; i < piece.watches.size(); ++i) {
    // One that stays 0 has no roots.
    if (piece.watches[i].sign != 0) add(piece.watches[i], false, i);
  }
  for (std::size_t i = 0; i < piece.events.size(); ++i) add(piece.events[i], true, i);
}

std::vector<WatchedLine> WatchList::Lines(const ZeroTerms& zeroTerms) const
{
  std::vector<WatchedLine> watched;
  for (const Entry& entry : lines) {
    const auto known = zeroTerms.find(entry.line);
    watched.push_back({entry.line, known == zeroTerms.end() ? 0 : known->second, entry.isEvent});
  }
  return watched;
}

std::vector<RootAt> WatchList::Of(std::span<const WatchedRoot> roots) const
{
  std::vector<RootAt> crossings;
  for (const WatchedRoot& root : roots) {
    const Entry& entry = lines[root.index];
    crossings.push_back({entry.isEvent, entry.index, root.signBefore, root.signAfter,
                         root.mostRoots, root.log2Part});
  }
  return crossings;
}

std::optional<Moment> WatchList::TimeAhead(const Moment& time, bool backwards) const
{
  std::optional<Moment> nearest;
  for (const Timed& timed : times) {
    const bool isAhead = backwards ? timed.time < time : timed.time > time;
    if (!isAhead) continue;
    if (!nearest || (backwards ? timed.time > *nearest : timed.time < *nearest))
      nearest = timed.time;
  }
  return nearest;
}

std::vector<RootAt> WatchList::At(const Moment& time, bool backwards) const
{
  std::vector<RootAt> crossings;
  for (const Timed& timed : times) {
    if (timed.time != time) continue;
    const int after = backwards ? -timed.slope : timed.slope;
    crossings.push_back({timed.isEvent, timed.index, -after, after, 1});
  }
  return crossings;
}

}  // namespace varno::solve
