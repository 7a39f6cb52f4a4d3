#include "solve/series/line_schedule.h"

#include <algorithm>
#include <numeric>

#include "solve/fixed/columns.h"
#include "solve/fixed/narrow.h"
#include "solve/series/line_places.h"
#include "solve/tape/below.h"

namespace varno::solve {

namespace {

/// Measured, in seconds, on one processor of 3 GHz: a product of two terms, and what any term takes
/// besides; the same with terms in 51-bit digits, for each of them; a meeting.
constexpr double kProductSeconds = 2.5e-9, kTermSeconds = 2e-8, kProductSecondsOfDigit = 6e-10,
                 kProductSecondsInTiles = 2e-10, kTermSecondsOfDigit = 1e-8, kMeetingSeconds = 1e-6;
/// What takes less is not shared.
constexpr double kLeastSharedSeconds = 8 * kMeetingSeconds;

/// How many products stand in a term k of a line.
double ProductsIn(const Line& line, double k)
{
  switch (line.kind) {
    case LineKind::kConstant:
    case LineKind::kTime:
      return 0;
    case LineKind::kState:
      return 1;
    case LineKind::kCombination:
      return line.factorCount;
    case LineKind::kSquare:
    case LineKind::kSquareRoot:
      return k / 2;
    case LineKind::kProduct:
    case LineKind::kQuotient:
    case LineKind::kIntegralOfProduct:
    case LineKind::kIntegralOfQuotient:
      return k;
    case LineKind::kPower:
      return 2 * k;
    case LineKind::kAngle:
      return 3 * k;
  }
  return 0;
}

/// The seconds that a term of each line takes on average.
std::vector<double> Costs(const Tape& tape, mpfr_prec_t bits, int order)
{
  double product = kProductSeconds, term = kTermSeconds;
  if (bits > NarrowArithmetic::kMostBits) {
    const double digits = static_cast<double>(bits) / kWideDigitBits;
    product +=
        digits * (BestColumnKernel().readsTiles ? kProductSecondsInTiles : kProductSecondsOfDigit);
    term += digits * kTermSecondsOfDigit;
  }
  std::vector<double> costs;
  for (const Line& line : tape.lines)
    costs.push_back(term + product * ProductsIn(line, order / 2.0));
  return costs;
}

/// The lines in levels: of a line and one that it is made of, that which the tape has later stands
/// in a later level. Within a level no line touches what another one does.
std::vector<std::vector<LineId>> Levels(const Tape& tape)
{
  std::vector<std::size_t> level(tape.lines.size(), 0);
  std::vector<std::vector<LineId>> levels;
  for (LineId id = 0; id < tape.lines.size(); ++id) {
    const std::vector<LineId> operands = Operands(tape, id);
    for (const LineId operand : operands) {
      if (operand < id) level[id] = std::max(level[id], level[operand] + 1);
    }
    for (const LineId operand : operands) {
      if (operand > id) level[operand] = std::max(level[operand], level[id] + 1);
    }
    levels.resize(std::max(levels.size(), level[id] + 1));
    levels[level[id]].push_back(id);
  }
  return levels;
}

}  // namespace

LineSchedule::LineSchedule(const Tape& tape) : members(1)
{
  members.front().lines.resize(tape.lines.size());
  std::iota(members.front().lines.begin(), members.front().lines.end(), LineId{0});
  EndPhase();
}

LineSchedule::LineSchedule(const Tape& tape, mpfr_prec_t bits, int order, int memberCount)
    : members(static_cast<std::size_t>(memberCount))
{
  const std::vector<double> costs = Costs(tape, bits, order);
  bool isShared = true;  // what the phase that is not ended yet holds
  const std::vector<double> places = LinePlaces(tape);
  for (std::vector<LineId>& level : Levels(tape)) {
    double cost = 0;
    for (const LineId id : level) cost += costs[id];
    secondsOfOne += cost;
    const bool wasShared = isShared;
    isShared = cost >= kLeastSharedSeconds;
    // Small levels, one behind the other, are one phase of the first member.
    if ((isShared || wasShared) && !members.front().lines.empty()) EndPhase();
    if (isShared) {
      std::ranges::stable_sort(level, {}, [&places](LineId id) { return places[id]; });
      Share(level, costs, cost);
    } else {
      AddToFirst(level);
      seconds += cost;
    }
  }
  EndPhase();
}

void LineSchedule::AddToFirst(std::span<const LineId> lines)
{
  std::vector<LineId>& first = members.front().lines;
  first.insert(first.end(), lines.begin(), lines.end());
}

/// Gives each member a stretch of lines that costs about the same.
void LineSchedule::Share(std::span<const LineId> lines, const std::vector<double>& costs,
                         double cost)
{
  const auto memberCount = static_cast<double>(members.size());
  double before = 0, largest = 0;
  for (const LineId id : lines) {
    const double middle = before + costs[id] / 2;
    const auto member = static_cast<std::size_t>(middle / cost * memberCount);
    members[std::min(member, members.size() - 1)].lines.push_back(id);
    before += costs[id];
    largest = std::max(largest, costs[id]);
  }
  seconds += std::max(cost / memberCount, largest);
}

void LineSchedule::EndPhase()
{
  for (Member& member : members) member.ends.push_back(member.lines.size());
  seconds += kMeetingSeconds;
}

bool IsWorthSharing(const Tape& tape, mpfr_prec_t bits, int order, int threadCount)
{
  return threadCount > 1 && LineSchedule(tape, bits, order, threadCount).IsWorthwhile();
}

}  // namespace varno::solve
