#pragma once

#include <algorithm>
#include <cstdint>
#include <deque>
#include <exception>
#include <memory>
#include <optional>
#include <vector>

#include "solve/integration/path.h"
#include "solve/integration/singularity.h"
#include "solve/model/model.h"
#include "solve/switching/dynamics.h"
#include "solve/verification/agreement.h"
#include "solve/verification/attempt.h"
#include "solve/verification/loss.h"
#include "solve/verification/quick_rows.h"
#include "solve/verification/row_schedule.h"
#include "solve/verification/rows_wanted.h"

namespace varno::solve {

/// A row that was given turned out to be wrong by a more exact attempt.
struct WrongRow {
  Moment time;
};

/// The rows of a problem, each verified before it is given.
///
/// The problem is integrated by two runs of different tolerance, order and precision. A row counts
/// when both agree to a quarter of its last unit. Where they do not, or contradict each other on
/// the way, the loss of digits so far is extrapolated to the end of the interval (Loss) and both
/// runs begin again, with at least twice the spare digits; rows already given are compared again.
/// They begin again before they disagree where the extrapolation leaves no doubt. An end
/// of the way is believed when a second attempt, which comes much nearer, ends in the same place.
///
/// Where few digits of an ordinary problem are asked for, two runs by the numbers of the hardware
/// come before all that (SolveQuickly), and take its place if no digit is in doubt.
class VerifiedRows {
 public:
  /// The model's parameters are bound; it and its dynamics must outlive this. `watch` is called
  /// after each step of each run, `poll` within them; both may throw to end it all.
  VerifiedRows(const Model& model, const Dynamics& dynamics, const Interval& interval,
               RowSchedule schedule, RowsWanted wanted, StepWatch watch, Poll poll);

  /// The next row or event, in the order of their times; none after the last. At the same time
  /// events come first. Throws what Attempt throws but Disagreement,
  /// PrecisionExhausted and WrongRow.
  std::optional<VerifiedRow> Next();
  /// The rows begin again, as exactly as the latest attempt; what was given is not compared.
  void Forget();

  /// The row of a time between others, by states of the present attempt that were kept
  /// (StepRecord), and whether it is verified like the rows of Next; none where states of a run are
  /// missing. Throws RowOutOfRange.
  std::optional<CheckedRow> RowBetween(const Moment& time, const std::vector<SizedStates>& states);

  /// The run behind the latest row; null before the first, and where rows were solved quickly.
  const Path* Integration() const { return attempt ? &attempt->Integration() : nullptr; }
  /// Of the present attempt, or of the one that was given up last.
  RunStatistics BestRun() const;
  std::int64_t RowsGiven() const;
  /// The time of the last row given; none before the first.
  std::optional<Moment> LastGiven() const;
  /// The settings of the runs, the most exact last.
  std::vector<RunSettings> Settings() const;
  /// Whether the rows ended because the solution rests.
  bool IsSteady() const { return isSteady; }
  /// How often the runs began again.
  int Restarts() const { return restarts; }
  /// How many decimals the difference of the runs has grown by in the present attempt.
  double DecimalsLost() const { return std::max(lostBackwards, loss.SoFar()); }
  /// The decimals that the runs compute with beyond those asked for.
  double SpareDecimals() const { return spareDecimals; }

 private:
  /// A row as it was given, its numbers rounded to somewhat more digits than were printed.
  using GivenRow = VerifiedRow;
  /// Where all runs of an attempt ended, and what that may be wrong by (log10).
  struct EndSeen {
    Moment time;
    double log10Error;
    std::optional<Singularity> singularity;
  };
  /// Why an attempt has to be given up.
  struct Failure {
    Moment time;
    double commonDecimals;
    bool blurred;
    double decimalsNeeded = 0;  ///< of a run, at least, to do better
  };

  std::optional<VerifiedRow> NextByRuns();
  void Begin();
  std::vector<Real> StartStates(const RunSettings& runSettings) const;
  std::optional<VerifiedRow> TryRow();
  void EndWith(std::exception_ptr reason);
  bool Fill();
  void FillToStop(const Moment& time);
  void AddEvents(const Moment& time);
  void AddEventsOf(const Lockstep::Switches& switches);
  std::vector<SizedNumber> TimeNumbers(const Lockstep::Switches& switches, std::size_t run) const;
  VerifiedRow JudgeEvent(const Lockstep::Switches& switches, std::size_t index);
  void CompareSwitches(const Lockstep::Switches& switches);
  VerifiedRow Judge(const Moment& time, const std::vector<std::vector<SizedNumber>>& runs) const;
  double CommonDecimals(const std::vector<Real>& first, const std::vector<Real>& best,
                        const std::vector<double>& sizes) const;
  void CompareStates(const Moment& time, const DenseStep& a, const DenseStep& best);
  void AddLossAtEnd(const Moment& time);
  void AddLoss(const Moment& time, double commonDecimals);
  double DecimalsApart(double commonDecimals) const;
  double Distance(const Moment& time) const;
  double WholeDistance() const;
  bool IsDoomed(double distance, double commonDecimals) const;
  void Escalate(const Failure& failure);
  void EndOrEscalate(const Failure& failure);
  void EndOrBeginAgain(const Singularity& singularity);
  bool IsConfirmedEnd(const Moment& time, const std::optional<Singularity>& singularity);
  double DecimalsOfConstants() const;
  double DecimalsOfLastRow(const Moment& end) const;
  double WayLog2(const Moment& time) const;
  /// The time may be one of the attempt that ends here.
  void BeginAgain(double spare, Moment time);
  double PlaceDecimals() const;
  double ApproachDecimals() const;
  bool MustComeNearer(const Singularity& end, double log10Way);
  bool MayDeclareZero() const;
  GivenRow Remembered(const VerifiedRow& row) const;
  bool Contradicts(const GivenRow& before, const VerifiedRow& row) const;

  const Model& model;
  const Dynamics& dynamics;
  Interval interval;
  RowSchedule fullSchedule;  // as given; each attempt goes through a copy
  RowsWanted wanted;
  StepWatch watch;
  Poll poll;

  bool hasBegun = false;
  std::optional<QuickRows> quick;  // instead of all that follows
  std::size_t quickRowsGiven = 0;
  std::unique_ptr<Attempt> attempt;
  std::optional<RowSchedule> schedule;
  Loss loss;                 // of the present attempt, in its latest direction
  double lostBackwards = 0;  // in the direction before
  double latestDistance = 0;
  RunStatistics givenUp;
  double spareDecimals;
  int restarts = 0;
  std::optional<EndSeen> endSeen;
  double approachDecimalsOfRow = 0;
  std::deque<GivenRow> given;
  // Of the present attempt
  std::size_t rowsDone = 0;
  std::deque<VerifiedRow> ready;
  std::optional<Moment> latestTime;   // of a row
  std::optional<Moment> timeAsked;    // of the row that comes next
  std::vector<Moment> latestReturns;  // for each run the latest time of the period's event
  bool hasStopped = false, isSteady = false;
  std::exception_ptr endReason;  // what there is to say when all that is ready has been given
};

}  // namespace varno::solve
