// Pieces of models, with right-hand sides as texts and decisions by hand.

#include "solve/piecewise/pieces.h"

#include <cmath>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "solve/evaluation/domain_error.h"
#include "solve/evaluation/evaluator.h"
#include "solve/evaluation/size.h"
#include "solve/model/binding.h"
#include "solve/model/print.h"
#include "tests/solve/support/comparison.h"
#include "tests/solve/support/read_problem.h"

namespace varno::solve {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr EdgeRule kRule{.noiseBits = 90, .zeroBits = 100, .mayDeclareZero = true};

/// The pieces of a problem, with its texts.
class TestPieces {
 public:
  explicit TestPieces(const std::string& text)
      : problem(text), pieces(BindParameters(problem.model, {}))
  {
    EXPECT_FALSE(problem.diagnostics.HasErrors()) << problem.Remarks();
  }

  FoundPiece AtStart(const Rational& time = 0, bool backwards = false)
  {
    return pieces.AtStart(Moment(time), backwards);
  }
  FoundPiece At(const Rational& time, const std::vector<std::string>& values,
                const Mode& known = {}, const EdgeRule& rule = kRule)
  {
    const Moment moment(time);
    std::vector<Real> states;
    std::vector<double> sizes;
    for (const std::string& value : values) {
      states.push_back(support::FromText(value, 300));
      sizes.push_back(0);
    }
    return pieces.At({moment, states, sizes, false, rule}, known);
  }
  Pieces& operator*() { return pieces; }

 private:
  ReadProblem problem;
  Pieces pieces;
};

std::string RightHandSide(const FoundPiece& found, std::size_t state = 0)
{
  const Model& model = found.piece->model;
  return PrintExpression(model, model.states[state].rightHandSide);
}

std::string TextOf(const FoundPiece& found, const Watched& watched)
{
  return PrintExpression(found.piece->model, watched.expression);
}

TEST(Pieces, SmoothModelsHaveOne)
{
  EXPECT_TRUE((*TestPieces("x' = sin(x) & 1; e = abs(x);")).IsSmooth());
  EXPECT_TRUE((*TestPieces("x' = abs(sin(1))*x & 1;")).IsSmooth());
  EXPECT_FALSE((*TestPieces("x' = abs(x) & 1;")).IsSmooth());
  EXPECT_FALSE((*TestPieces("x' = 1; event hit: x - 1;")).IsSmooth());
}

TEST(Pieces, OperationsAreReplacedByWhatTheyAreThere)
{
  TestPieces pieces(
      "x' = abs(x) & -2; y' = sign(x)*y & 2; z' = min(x, y) & 1/2; w' = max(x, y, z);"
      "u' = floor(z) + 10*ceil(z) + 100*trunc(x*z); v' = if(x < 0 and not y <= z, x, y);");
  const FoundPiece found = pieces.AtStart();
  EXPECT_EQ(RightHandSide(found, 0), "-x");
  EXPECT_EQ(RightHandSide(found, 1), "-y");
  EXPECT_EQ(RightHandSide(found, 2), "x");
  EXPECT_EQ(RightHandSide(found, 3), "y");
  EXPECT_EQ(RightHandSide(found, 4), "-90");
  EXPECT_EQ(RightHandSide(found, 5), "x");
  EXPECT_THAT(found.onBoundary, ElementsAre(testing::_));  // x z = -1
}

TEST(Pieces, TheSameQuestionIsOneCondition)
{
  TestPieces pieces(
      "x' = abs(x) + sign(-x) + if(x < 0, 1, 2) + if(0 <= x, 1, 2) + max(0, x) & 1;"
      "y' = min(x, y) + if(y > x, 3, 4) + floor(y) + ceil(y) & 3/2;");
  EXPECT_EQ((*pieces).Conditions().size(), 3U);
  const FoundPiece found = pieces.AtStart();
  EXPECT_EQ(RightHandSide(found), "x + -1 + 2 + 1 + x");
  ASSERT_EQ(found.piece->watches.size(), 4U);  // of floor and ceil two
  EXPECT_THAT(found.onBoundary, IsEmpty());
  for (const Watch& watch : found.piece->watches) EXPECT_NE(watch.line, kNone);
  EXPECT_EQ(found.piece->tape.watched.size(), 4U);
}

TEST(Pieces, BranchesThatAreNotChosenAreNotThere)
{
  TestPieces pieces("x' = if(x < 1, 2*x, if(x < ln(y), sqrt(y), 1/y)); y' = 1 & -1;");
  EXPECT_EQ((*pieces).Conditions().size(), 2U);
  const FoundPiece found = pieces.AtStart();
  EXPECT_EQ(RightHandSide(found), "2*x");
  EXPECT_EQ(found.piece->mode.size(), 1U);
  EXPECT_THROW(pieces.At(0, {"2", "-1"}), DomainError);  // ln(y) counts now
  EXPECT_EQ(RightHandSide(pieces.At(0, {"2", "0.5"})), "1/y");
  EXPECT_EQ(RightHandSide(pieces.At(0, {"2", "10"})), "sqrt(y)");
}

TEST(Pieces, WatchesTellWhatComesBeyond)
{
  TestPieces pieces("x' = floor(x) & 5/2; y' = if(y < x, 1, -1);");
  const FoundPiece found = pieces.AtStart();
  ASSERT_EQ(found.piece->watches.size(), 3U);
  const auto& watches = found.piece->watches;
  EXPECT_EQ(TextOf(found, watches[0]), "x - 2");
  EXPECT_EQ(watches[0].sign, 1);
  EXPECT_EQ(TextOf(found, watches[1]), "x - 3");
  EXPECT_EQ(watches[1].sign, -1);
  EXPECT_EQ(watches[0].Beyond(), 3);  // between 1 and 2
  EXPECT_EQ(watches[1].Beyond(), 7);  // between 3 and 4
  EXPECT_EQ(watches[2].Beyond(), -found.piece->mode.at(watches[2].condition));

  Mode beyond = found.piece->mode;
  beyond[watches[1].condition] = watches[1].Beyond();
  EXPECT_EQ(RightHandSide(pieces.At(1, {"3", "0"}, beyond)), "3");
}

TEST(Pieces, ConditionsOnTimeHaveExactTimes)
{
  TestPieces pieces("x' = floor(t/0.1) + [t < 1, 2 : 3; 4 : 5];");
  const FoundPiece found = pieces.At(Rational(13, 10), {"0"});
  EXPECT_EQ(RightHandSide(found), "16");
  std::vector<Rational> times;
  for (const Watch& watch : found.piece->watches) {
    EXPECT_EQ(watch.line, kNone);
    times.push_back(*watch.time);
  }
  EXPECT_THAT(times, testing::UnorderedElementsAre(Rational(13, 10), Rational(7, 5), 1, 2));
  EXPECT_THAT(found.piece->tape.watched, IsEmpty());
  EXPECT_THAT(found.onBoundary, IsEmpty());  // what comes next counts
  EXPECT_EQ(RightHandSide(pieces.AtStart(1)), "13");
  EXPECT_EQ(RightHandSide(pieces.AtStart(1, true)), "14");  // time runs backwards
}

TEST(Pieces, IrrationalStartTimes)
{
  TestPieces pieces("x' = floor(t) + if(sin(t) < x, 10, 20);");
  const auto pi =
      std::make_shared<const Constant>([](mpfr_ptr result) { mpfr_const_pi(result, MPFR_RNDN); });
  const FoundPiece found = (*pieces).AtStart(Moment(pi), false);
  EXPECT_EQ(RightHandSide(found), "23");  // sin(pi) < 0 is false
  EXPECT_EQ(found.onBoundary.size(), 1U);
}

TEST(Pieces, StartValuesDecideExactly)
{
  EXPECT_EQ(RightHandSide(TestPieces("x' = sign(x) & 1e-400;").AtStart()), "1");
  EXPECT_EQ(RightHandSide(TestPieces("x' = sign(x - 1) & 1 - 1e-400;").AtStart()), "-1");
  TestPieces equal("x' = sign(x - 0.3) & 0.1 + 0.2;");
  EXPECT_EQ(RightHandSide(equal.AtStart()), "0");
  EXPECT_EQ(equal.AtStart().onBoundary.size(), 1U);
  EXPECT_EQ(equal.AtStart().piece->watches[0].sign, 0);
}

TEST(Pieces, WhatIsNearABoundaryIsOnItOrInDoubt)
{
  TestPieces pieces("x' = sign(x - 1);");
  const std::string onIt = "1.0000000000000000000000000000000000000001";  // 1 + 1e-40
  EXPECT_EQ(RightHandSide(pieces.At(0, {onIt})), "0");
  EXPECT_EQ(pieces.At(0, {onIt}).onBoundary.size(), 1U);
  EXPECT_EQ(RightHandSide(pieces.At(0, {onIt}, {{0, -1}})), "-1");
  EXPECT_THROW(pieces.At(0, {"1.00000000000000000000000000001"}), EdgeInDoubt);
  EXPECT_EQ(RightHandSide(pieces.At(0, {"1.00001"})), "1");
  EdgeRule cautious = kRule;
  cautious.mayDeclareZero = false;
  EXPECT_THROW(pieces.At(0, {onIt}, {}, cautious), EdgeInDoubt);
}

TEST(Pieces, ConditionsThatAreConstantInAPieceAreNotWatched)
{
  TestPieces pieces("x' = abs(if(t < 1, -sin(1), x)) + floor(2*t - t - t + 3/2);");
  const FoundPiece found = pieces.AtStart();
  EXPECT_EQ(RightHandSide(found), "sin(1) + 1");
  ASSERT_EQ(found.piece->watches.size(), 1U);
  EXPECT_EQ(found.piece->watches[0].time, Rational(1));
}

/// The angles of points on all sides, of pieces and by MPFR.
TEST(Pieces, AnglesHaveNoCutOnTheirPiece)
{
  TestPieces pieces("x' = atan2(y, x); y' = acotan(x);");
  const std::vector<std::string> numbers{"-2", "-0.5", "0.5", "3"};
  for (const std::string& x : numbers) {
    for (const std::string& y : numbers) {
      const FoundPiece found = pieces.At(0, {x, y});
      const Model& model = found.piece->model;
      Evaluator values(model.graph, {model.states[0].rightHandSide, model.states[1].rightHandSide},
                       100);
      const std::vector<Real> states{support::FromText(x, 100), support::FromText(y, 100)};
      values.Evaluate(Real(), states);
      EXPECT_NEAR(values[0].ToDouble(), std::atan2(std::stod(y), std::stod(x)), 1e-15);
      EXPECT_NEAR(values[1].ToDouble(), std::atan(1 / std::stod(x)), 1e-15);
    }
  }
  // Just across the cut, the piece of one side goes on smoothly.
  const FoundPiece above = pieces.At(0, {"-1", "0.5"});
  const Model& model = above.piece->model;
  Evaluator angle(model.graph, {model.states[0].rightHandSide}, 100);
  angle.Evaluate(Real(),
                 std::vector{support::FromText("-1", 100), support::FromText("-1e-9", 100)});
  EXPECT_NEAR(angle[0].ToDouble(), 3.14159265358979 + 1e-9, 1e-13);
}

TEST(Pieces, EventsAreWatched)
{
  TestPieces pieces(
      "y' = v & 1; v' = -1; event hit: y falling; event end: t - 3; event top: "
      "abs(v) - 1;");
  const FoundPiece found = pieces.At(0, {"1", "-2"});
  ASSERT_EQ(found.piece->events.size(), 3U);
  EXPECT_EQ(found.piece->events[0].line, 0U);  // the state itself
  EXPECT_EQ(found.piece->events[1].time, Rational(3));
  EXPECT_EQ(TextOf(found, found.piece->events[2]), "-v - 1");
  EXPECT_EQ(found.piece->tape.watched.size(), 3U);  // of the sign of v, hit and top
}

TEST(Pieces, AreKeptByTheirMode)
{
  TestPieces pieces("x' = abs(x) & 1;");
  const FoundPiece start = pieces.AtStart();
  EXPECT_EQ(start.piece, pieces.At(0, {"3"}).piece);
  EXPECT_EQ(start.piece, (*pieces).Of({{0, 1}}));
  EXPECT_NE(start.piece, pieces.At(0, {"-3"}).piece);
  EXPECT_THROW((*pieces).Of({}), std::invalid_argument);
}

}  // namespace
}  // namespace varno::solve
