#pragma once

#include <optional>
#include <vector>

#include <gtest/gtest.h>

#include "solve/rows/row_times.h"
#include "solve/switching/dynamics.h"
#include "solve/tape/compile.h"
#include "solve/verification/verified_rows.h"
#include "tests/solve/support/equations.h"

namespace varno::solve {

/// x' = -2 x from 1, but from 2 once there was a step: the first attempt is wrong, a second one,
/// which begins anew, sees the other value. Columns are x and x - exp(-2), rows at 0, 1/2 and 1.
/// What the first attempt has at the end is a zero, so that there is a second one.
class ChangedStart : public testing::Test {
 protected:
  ChangedStart()
  {
    const support::Expression x = equations.Variable("x", 1);
    equations.SetDerivative(x, -2 * x);
    const support::Expression difference =
        x - support::Function(Operation::kExp, equations.Number(-2));
    two = equations.Number(2).id;
    model = equations.Finished();
    columns = {x.id, difference.id};
    tape = Compile(model);
    dynamics.emplace(model, tape);
    rows.emplace(
        model, *dynamics, interval,
        RowSchedule(interval, RowTimes::Points(interval.from, interval.to, 2)),
        RowsWanted{.columns = columns, .digits = 15, .check = true, .maxBits = 4096, .threads = 1},
        [this](std::size_t, const DenseStep&) { model.states.front().start = two; }, Poll());
  }

  Interval interval{Moment(Rational(0)), Moment(Rational(0)), Moment(Rational(1))};
  support::Equations equations;
  NodeId two{};
  Model model;
  std::vector<NodeId> columns;
  Tape tape;
  std::optional<Dynamics> dynamics;
  std::optional<VerifiedRows> rows;
};

}  // namespace varno::solve
