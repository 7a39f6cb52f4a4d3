#pragma once

#include <cstdint>
#include <exception>
#include <memory>
#include <optional>
#include <vector>

#include "solve/integration/run.h"
#include "solve/integration/stepper.h"
#include "solve/model/model.h"
#include "solve/piecewise/pieces.h"
#include "solve/switching/accumulation.h"
#include "solve/switching/settling.h"
#include "solve/switching/switch_point.h"
#include "solve/switching/watch_list.h"

namespace varno::solve {

/// One integration of a piecewise smooth model with events: a run of one piece after the other.
///
/// A step ends where the expression of a condition or of an event is 0. There the run goes over to
/// the piece behind it, and events assign. The latest step tells what happened at its end; before
/// the first step, what happens at the start.
class PiecewiseRun final : public Stepper {
 public:
  /// As Run. The pieces and the model, of which they are, must outlive the run.
  PiecewiseRun(Pieces& pieces, const Model& model, const SwitchRule& rule, const Moment& start,
               std::vector<Real> states, const Moment& reach, Poll poll);

  /// Throws what Run throws, and StoppedByEvent.
  void Step() override;
  const DenseStep& Latest() const override { return latest; }
  /// 0 where the way ends at its start.
  std::size_t LineCount() const override { return piece ? piece->tape.lines.size() : 0; }

 private:
  void BeginAtStart();
  void Begin(SettledPiece settled, const SwitchPoint& point, const std::vector<RootAt>& ahead);
  std::vector<RootAt> CrossingsAtEnd() const;
  std::vector<RootAt> EventsAtStart(const SwitchPoint& point) const;
  std::optional<SettledPiece> OntoTouched(const std::vector<RootAt>& crossings, SwitchPoint& point);
  void Pass(std::vector<RootAt> crossings);
  Singularity EndAt(const RootAt& root, SingularityKind kind) const;
  void CompleteSigns(std::vector<RootAt>& crossings) const;
  void RequireAboveNoise(const RootAt& crossing) const;
  void RequireCertain(const std::vector<RootAt>& crossings) const;
  SwitchPoint PointAtEnd(const std::vector<RootAt>& crossings) const;
  std::vector<std::uint32_t> Firing(const std::vector<RootAt>& crossings,
                                    const SettledPiece& behind, const SwitchPoint& point) const;
  bool Counts(const Event& event, int signBefore) const;
  Mode KnownAfter(const Piece& before, const std::vector<const Event*>& events,
                  const std::vector<RootAt>& roots) const;
  void Record(Switch what, const RootAt& crossing);
  void NameInModel(DomainError& error) const;
  void StepOnPiece();

  const Model& model;
  SwitchRule rule;
  Moment wayBegin, reach;
  Poll poll;
  Settling settling;
  Accumulation accumulation;
  std::shared_ptr<const Piece> piece;
  std::optional<WatchList> watchList;
  std::unique_ptr<Run> run;
  std::int64_t earlierSteps = 0;  // of the runs before
  DenseStep latest;
  int standstills = 0;     // latest steps of no length
  std::exception_ptr end;  // of the way, behind the latest step
};

}  // namespace varno::solve
