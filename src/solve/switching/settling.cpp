#include "solve/switching/settling.h"

#include <algorithm>
#include <cstddef>
#include <optional>
#include <utility>

#include "solve/evaluation/domain_error.h"
#include "solve/graph/same_node.h"
#include "solve/integration/step_series.h"
#include "solve/switching/first_term.h"
#include "solve/switching/leaving.h"

namespace varno::solve {

namespace {

/// Leaving one boundary may uncover another one.
constexpr int kMostRounds = 20;
/// Of so many boundaries that meet in a point all combinations of sides are tried.
constexpr std::size_t kMostCombined = 6;

const Watch* Find(const Piece& piece, ConditionId condition, const Decision& boundary)
{
  const auto watch = std::ranges::find_if(piece.watches, [&](const Watch& each) {
    return each.condition == condition && each.boundary == boundary;
  });
  return watch == piece.watches.end() ? nullptr : &*watch;
}

/// The decisions of a piece on which expressions stay 0: they are so to its end, whatever rounding
/// makes of them.
Mode OnBoundaries(const Piece& piece)
{
  Mode mode;
  for (const auto& [condition, decision] : piece.mode) {
    if (IsOnBoundary(decision)) mode[condition] = decision;
  }
  return mode;
}

}  // namespace

Singularity Settling::Sliding(const Piece& piece, const Watch& watch,
                              const SwitchPoint& point) const
{
  return {.time = point.time,
          .node = SameNode(graph, piece.model.graph[watch.expression]),
          .kind = SingularityKind::kSliding,
          .bits = rule.settings.bits};
}

/// Whether an expression stays on a boundary that is known is for the field to say.
FoundPiece Settling::PieceAt(const SwitchPoint& point, const Mode& known)
{
  try {
    FoundPiece found = pieces.At({.time = point.time,
                                  .states = point.states,
                                  .sizes = point.sizes,
                                  .backwards = point.backwards,
                                  .rule = rule.zero},
                                 known);
    for (const auto& [condition, decision] : known) {
      const auto made = found.piece->mode.find(condition);
      if (made != found.piece->mode.end() && made->second == decision && IsOnBoundary(decision))
        found.onBoundary.push_back(condition);
    }
    return found;
  } catch (const EdgeInDoubt&) {
    throw ZeroInDoubt{point.time};
  }
}

SettledPiece Settling::AtStart(const SwitchPoint& start)
{
  return Settle(pieces.AtStart(start.time, start.backwards), start);
}

SettledPiece Settling::At(const SwitchPoint& point, const Mode& known)
{
  return Settle(PieceAt(point, known), point);
}

/// Leaves the boundaries that the point lies on, to the sides where the field on them points.
SettledPiece Settling::Settle(FoundPiece found, const SwitchPoint& point)
{
  std::vector<Boundary> left;
  for (int round = 0; round < kMostRounds && !found.onBoundary.empty(); ++round) {
    Mode mode = found.piece->mode;
    FirstTerms terms(*found.piece, rule, point);
    bool moves = false;
    for (const ConditionId condition : found.onBoundary) {
      const Decision boundary = mode.at(condition);
      const Watch* const watch = Find(*found.piece, condition, boundary);
      const int sign = watch == nullptr ? 0 : terms.Of(watch->line, 1).sign;
      if (sign == 0) continue;
      mode[condition] = boundary + sign;
      left.push_back({condition, boundary});
      moves = true;
    }
    if (!moves) break;
    found = PieceAt(point, mode);
  }
  for (const ConditionId condition : found.onBoundary)
    RequireUnique(*found.piece, condition, point);
  SettledPiece settled{found.piece, {}};
  Mode staying;
  if (GoesOn(settled, point, left, staying)) return settled;
  throw Sliding(*settled.piece,
                *Find(*settled.piece, left.front().condition, left.front().decision), point);
}

/// Throws DomainError where an expression that stays 0 belongs to one of several solutions: others
/// have no series there, and lead away.
void Settling::RequireUnique(const Piece& piece, ConditionId condition, const SwitchPoint& point)
{
  const Decision boundary = piece.mode.at(condition);
  const Watch* const watch = Find(piece, condition, boundary);
  if (watch == nullptr || watch->sign != 0 || watch->time) return;
  for (const int side : {-1, 1}) {
    Mode mode = piece.mode;
    mode[condition] = boundary + side;
    const FoundPiece beside = PieceAt(point, mode);
    const Watch* const left = Find(*beside.piece, condition, boundary);
    if (left == nullptr) continue;
    try {
      [[maybe_unused]] const FirstTerms terms(*beside.piece, rule, point);
    } catch (DomainError& error) {
      if (error.outcome != Outcome::kNoSeries) continue;
      if (!MayLeave(*beside.piece, *left, point, rule.settings)) continue;
      error.node = SameNode(graph, beside.piece->tape.graph[error.node]);
      error.isOfModel = true;
      throw;
    }
  }
}

/// Whether the expressions of the boundaries go to the sides that the piece is for. Adds those that
/// stay where they are instead.
bool Settling::GoesOn(SettledPiece& settled, const SwitchPoint& point,
                      const std::vector<Boundary>& boundaries, Mode& staying) const
{
  std::optional<FirstTerms> terms;
  for (const Boundary& boundary : boundaries) {
    const Watch* const watch = Find(*settled.piece, boundary.condition, boundary.decision);
    if (watch == nullptr || watch->sign == 0 || watch->time) continue;
    if (!terms) {
      try {
        terms.emplace(*settled.piece, rule, point);
      } catch (const DomainError&) {
        // The run will find out: expressions such as sin(t)/t have their own way to go on.
        settled.zeroTerms[watch->line] = 1;
        continue;
      }
    }
    const FirstTerm first = terms->Of(watch->line, 1);
    if (first.sign == -watch->sign) return false;
    if (first.sign == 0) staying[boundary.condition] = boundary.decision;
    settled.zeroTerms[watch->line] = first.order;
  }
  return staying.empty();
}

std::optional<SettledPiece> Settling::Onto(const SwitchPoint& point, const Piece& before,
                                           const std::vector<const Watch*>& touched)
{
  std::vector<Boundary> boundaries;
  Mode known = OnBoundaries(before);
  for (const Watch* watch : touched) {
    boundaries.push_back({watch->condition, watch->boundary});
    known[watch->condition] = watch->boundary;
  }
  try {
    SettledPiece settled = Settle(PieceAt(point, known), point);
    if (settled.piece->mode == before.mode) return std::nullopt;
    // Throws where there is no series on it either.
    [[maybe_unused]] const FirstTerms terms(*settled.piece, rule, point);
    Mode staying;
    if (GoesOn(settled, point, boundaries, staying)) return settled;
  } catch (const DomainError&) {
    // As with sqrt(h) where h stays 0.
  }
  return std::nullopt;
}

SettledPiece Settling::Beyond(const SwitchPoint& point, const Piece& before,
                              const std::vector<const Watch*>& crossed)
{
  std::vector<Boundary> boundaries;
  boundaries.reserve(crossed.size());
  for (const Watch* watch : crossed) boundaries.push_back({watch->condition, watch->boundary});
  const std::size_t count = std::min(crossed.size(), kMostCombined);
  // To leave none of them where all were crossed would be to stay.
  const std::size_t combinations = crossed.size() == 1 ? 1 : (std::size_t{1} << count) - 1;
  for (std::size_t combination = 0; combination < combinations; ++combination) {
    Mode known = OnBoundaries(before);
    for (std::size_t i = 0; i < crossed.size(); ++i) {
      const bool stays = i < count && ((combination >> i) & 1U) != 0;
      const Decision& decision = before.mode.at(crossed[i]->condition);
      known[crossed[i]->condition] = stays ? decision : crossed[i]->Beyond();
    }
    SettledPiece settled = Settle(PieceAt(point, known), point);
    Mode staying;
    if (GoesOn(settled, point, boundaries, staying)) return settled;
    if (staying.empty()) continue;
    // What reaches 0 and stays there has no sign.
    for (const auto& [condition, decision] : staying) known[condition] = decision;
    settled = Settle(PieceAt(point, known), point);
    staying.clear();
    if (settled.piece->mode != before.mode && GoesOn(settled, point, boundaries, staying))
      return settled;
  }
  throw Sliding(before, *crossed.front(), point);
}

}  // namespace varno::solve
