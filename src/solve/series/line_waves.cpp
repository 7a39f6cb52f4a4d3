#include "solve/series/line_waves.h"

#include <algorithm>
#include <functional>
#include <iterator>
#include <numeric>
#include <utility>

#include "solve/series/line_places.h"
#include "solve/tape/below.h"

namespace varno::solve {

namespace {

/// So many groups of lines at most: to find out what each can do takes time.
constexpr std::size_t kMostGroups = 256;
/// No more than this part of all lines may wait for others at a time.
constexpr double kMostWaiting = 0.25;
/// No more may be left to a member than this part of its lines: they are summed ahead for once
/// more, and waves of two members save a quarter of their time.
constexpr double kMostRest = 1.0 / 3;

/// By line, which lines it is made of, all in one list.
class OperandLists {
 public:
  explicit OperandLists(const Tape& tape)
  {
    for (LineId id = 0; id < tape.lines.size(); ++id) {
      begins.push_back(operands.size());
      for (const LineId operand : Operands(tape, id)) operands.push_back(operand);
    }
    begins.push_back(operands.size());
  }

  std::span<const LineId> Of(LineId id) const
  {
    return std::span(operands).subspan(begins[id], begins[id + 1] - begins[id]);
  }

 private:
  std::vector<std::size_t> begins;
  std::vector<LineId> operands;
};

/// The group of each line, by its place among all.
std::vector<std::uint32_t> GroupsOf(const Tape& tape, std::size_t linesAtOnce)
{
  const std::vector<double> places = LinePlaces(tape);
  std::vector<LineId> sorted(tape.lines.size());
  std::iota(sorted.begin(), sorted.end(), LineId{0});
  std::ranges::stable_sort(sorted, {}, [&places](LineId id) { return places[id]; });
  const std::size_t size = std::max(linesAtOnce, sorted.size() / kMostGroups + 1);
  std::vector<std::uint32_t> groups(sorted.size());
  for (std::size_t i = 0; i < sorted.size(); ++i)
    groups[sorted[i]] = static_cast<std::uint32_t>(i / size);
  return groups;
}

/// How many terms of a wave each line has.
class Progress {
 public:
  /// Of all lines; what others than these are doing is not known.
  Progress(const OperandLists& operands, const std::vector<std::uint32_t>& groups,
           std::span<const LineId> known)
      : operands(operands), groups(groups), isKnown(groups.size(), false), made(groups.size(), 0)
  {
    for (const LineId id : known) isKnown[id] = true;
  }

  /// Makes what can be made of these lines, which are in an order in which they may be made.
  std::vector<LineWaves::Stretch> Make(std::span<const LineId> lines);
  bool IsDone(LineId id) const { return made[id] == LineWaves::kOrders; }
  /// Takes over what is made of these lines.
  void Join(const Progress& other, std::span<const LineId> lines)
  {
    for (const LineId id : lines) made[id] = other.made[id];
  }
  /// The most lines that waited for others.
  std::size_t MostWaiting() const { return mostWaiting; }

 private:
  bool IsReady(LineId id, int order) const;

  const OperandLists& operands;
  const std::vector<std::uint32_t>& groups;
  std::vector<bool> isKnown;
  std::vector<std::uint8_t> made;
  std::size_t mostWaiting = 0;
};

/// A line reads term k of lines that the tape has before it, term k - 1 of others: nothing of those
/// that another thread is setting terms of.
bool Progress::IsReady(LineId id, int order) const
{
  return std::ranges::all_of(operands.Of(id), [&](LineId operand) {
    return isKnown[operand] && made[operand] >= (operand < id ? order + 1 : order);
  });
}

std::vector<LineWaves::Stretch> Progress::Make(std::span<const LineId> lines)
{
  std::vector<std::vector<std::uint32_t>> places;  // by group
  for (std::uint32_t place = 0; place < lines.size(); ++place) {
    const std::uint32_t group = groups[lines[place]];
    if (places.size() <= group) places.resize(group + std::size_t{1});
    places[group].push_back(place);
  }
  std::vector<LineWaves::Stretch> stretches;
  std::vector<std::uint32_t> waiting;
  for (const std::vector<std::uint32_t>& ofGroup : places) {
    std::vector<std::uint32_t> active;
    std::ranges::merge(waiting, ofGroup, std::back_inserter(active));
    for (int order = 0; order < LineWaves::kOrders; ++order) {
      for (const std::uint32_t place : active) {
        const LineId id = lines[place];
        if (made[id] != order || !IsReady(id, order)) continue;
        ++made[id];
        if (!stretches.empty() && stretches.back().order == order &&
            stretches.back().last == place) {
          ++stretches.back().last;
        } else {
          stretches.push_back({place, place + 1, order});
        }
      }
    }
    std::erase_if(active, [&](std::uint32_t place) { return IsDone(lines[place]); });
    waiting = std::move(active);
    mostWaiting = std::max(mostWaiting, waiting.size());
  }
  return stretches;
}

/// Cuts lines into parts, none of which reads another one.
std::vector<std::vector<LineId>> Parts(const OperandLists& operands,
                                       const std::vector<LineId>& lines, std::size_t lineCount)
{
  // Each points to another line of its part, and the first one of a part to itself.
  std::vector<LineId> firsts(lineCount, kNone);
  for (const LineId id : lines) firsts[id] = id;
  const auto firstOf = [&firsts](LineId id) {
    while (firsts[id] != id) id = firsts[id] = firsts[firsts[id]];
    return id;
  };
  for (const LineId id : lines) {
    for (const LineId operand : operands.Of(id)) {
      if (firsts[operand] == kNone) continue;
      const auto [first, second] = std::minmax({firstOf(id), firstOf(operand)});
      firsts[second] = first;
    }
  }
  std::vector<std::size_t> numbers(lineCount);
  std::vector<std::vector<LineId>> parts;
  for (const LineId id : lines) {
    const LineId first = firstOf(id);
    if (first == id) {
      numbers[id] = parts.size();
      parts.emplace_back();
    }
    parts[numbers[first]].push_back(id);
  }
  return parts;
}

}  // namespace

LineWaves::LineWaves(const Tape& tape, const LineSchedule& schedule, std::size_t linesAtOnce)
    : members(static_cast<std::size_t>(schedule.MemberCount()))
{
  const OperandLists operands(tape);
  const std::vector<std::uint32_t> groups = GroupsOf(tape, linesAtOnce);
  std::vector<LineId> lines(tape.lines.size());
  std::iota(lines.begin(), lines.end(), LineId{0});
  Progress all(operands, groups, lines);
  std::size_t mostWaiting = 0, mostRest = 0;
  for (int number = 0; number < schedule.MemberCount(); ++number) {
    Progress own(operands, groups, schedule.Lines(number));
    members[static_cast<std::size_t>(number)].stretches = own.Make(schedule.Lines(number));
    all.Join(own, schedule.Lines(number));
    mostWaiting = std::max(mostWaiting, own.MostWaiting());
  }
  std::erase_if(lines, [&all](LineId id) { return all.IsDone(id); });
  ShareRest(Parts(operands, lines, tape.lines.size()));
  for (Member& member : members) {
    member.rest = all.Make(member.restLines);
    mostRest = std::max(mostRest, member.restLines.size());
  }
  const auto count = static_cast<double>(tape.lines.size());
  const double countOfMember = count / static_cast<double>(members.size());
  isWorthwhile = static_cast<double>(mostWaiting) <= kMostWaiting * count &&
                 static_cast<double>(mostRest) <= kMostRest * countOfMember;
}

/// Gives each part to the member that has the least.
void LineWaves::ShareRest(std::vector<std::vector<LineId>> parts)
{
  std::ranges::stable_sort(parts, std::ranges::greater(), &std::vector<LineId>::size);
  for (const std::vector<LineId>& part : parts) {
    Member& least = *std::ranges::min_element(
        members, {}, [](const Member& member) { return member.restLines.size(); });
    least.restLines.insert(least.restLines.end(), part.begin(), part.end());
  }
  for (Member& member : members) std::ranges::sort(member.restLines);
}

bool LineWaves::HasRest() const
{
  return std::ranges::any_of(members, [](const Member& member) { return !member.rest.empty(); });
}

}  // namespace varno::solve
