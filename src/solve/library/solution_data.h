#pragma once

#include <chrono>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "solve/library/compiled_problem.h"
#include "solve/library/ends.h"
#include "solve/library/option_constants.h"
#include "solve/library/period_search.h"
#include "solve/library/solve.h"
#include "solve/library/stiffness_notice.h"
#include "solve/rows/number_format.h"
#include "solve/rows/time_format.h"
#include "solve/switching/dynamics.h"
#include "solve/verification/held_rows.h"
#include "solve/verification/step_record.h"
#include "solve/verification/verified_rows.h"

namespace varno::solve {

/// What a Solution holds: the problem with its parameters bound, and the run.
struct Solution::Implementation {
  Implementation(CompiledProblem problem, Options options);
  // The run refers to the dynamics, which therefore must not move.
  Implementation(const Implementation&) = delete;
  Implementation& operator=(const Implementation&) = delete;

  std::optional<Row> Next();
  Summary Summarise() const;
  std::string Explain() const;
  std::string ExplainTape(const Tape& tape) const;

  void ChooseColumns();
  Interval MakeInterval();
  RowSchedule MakeSchedule();
  std::optional<double> Log2Steady();
  std::optional<std::uint32_t> PeriodEvent() const;
  PointBetween At(const Moment& time);
  Moment ReadTime(const std::string& time) const;
  void Watch(std::size_t run, const DenseStep& step);
  void RecordStep(std::size_t run, const DenseStep& step);
  Step MakeStep(int run, std::shared_ptr<const StepPolynomial> polynomial) const;
  Value MakeTime(const Moment& time, mpfr_prec_t bits) const;
  void EndWhereAsked(const Moment* rowTime = nullptr) const;
  Moment Reached() const;
  std::optional<Moment> RowsBeyond(const Moment& time) const;
  RunEnded AtLimit(const std::string& limit, const Moment& time) const;
  int Threads() const;
  bool MayBeQuick() const;
  Row MakeRow(const VerifiedRow& row) const;
  std::optional<Row> AddReturn(const VerifiedRow& row);
  Value MakeValue(const RowNumber& number) const;
  RunEnded WrongRowEnd(const Moment& time) const;
  double SecondsSinceBegin() const;

  std::shared_ptr<const Sources> texts;
  const Sources& sources;
  Options options;
  BoundProblem bound;
  const Model& model;
  Dynamics dynamics;
  ConstantMoments moments;
  NumberFormat numberFormat;
  TimeFormat timeFormat;
  std::vector<std::string> names;
  std::vector<std::string> stateNames;
  std::vector<NodeId> columns;  // those of rows, then all variables where a period is looked for
  Interval interval;
  RowSchedule schedule;
  Ends ends;
  std::optional<VerifiedRows> rows;
  std::optional<HeldRows> heldRows;          // Options::hold
  std::int64_t numbersAtJumps = 0;           // in rows
  std::optional<PeriodSearch> periodSearch;  // while there is something to look for
  std::string period;                        // once it is known
  std::optional<Model> unbound;              // with parameters, for times that are asked for later
  StepRecord record;
  int recordedAttempt = 0;
  StiffnessNotice stiffness;
  std::chrono::steady_clock::time_point begin;
};

}  // namespace varno::solve
