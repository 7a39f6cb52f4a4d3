#pragma once

#include <algorithm>
#include <atomic>
#include <cmath>
#include <cstdint>
#include <limits>
#include <memory>
#include <memory_resource>
#include <optional>
#include <span>
#include <type_traits>
#include <utility>
#include <vector>

#include "solve/evaluation/size.h"
#include "solve/fixed/large_pages.h"
#include "solve/fixed/log2.h"
#include "solve/fixed/narrow.h"
#include "solve/series/block_recurrences.h"
#include "solve/series/block_states.h"
#include "solve/series/block_sums.h"
#include "solve/series/line_operands.h"
#include "solve/series/line_schedule.h"
#include "solve/series/line_waves.h"
#include "solve/series/mpfr_series.h"
#include "solve/series/multiplied_lines.h"
#include "solve/series/weighted_lines.h"
#include "solve/team/team.h"

namespace varno::solve {

/// The Taylor terms of a tape in block fixed-point arithmetic: one exponent for all terms of a
/// line, so that a sum of products is one of integers (docs/solve/fixed-point.md).
///
/// Errors are small beside the largest term of a line, not beside each term. Where a step asks for
/// more, or what happens in it does not fit the numbers, the terms are those of MpfrSeries, which
/// also computes all terms 0.
template <class Arithmetic>
class BlockSeries final : public Series {
 public:
  /// With a team, whose members share the lines, all but `poll` may be called on several threads.
  BlockSeries(const Tape& tape, mpfr_prec_t bits, int usualOrder, bool disturbed,
              const Poll& poll = {}, std::shared_ptr<Team> givenTeam = nullptr)
      : tape(tape),
        bits(bits),
        mostCancelledBits(kMostCancelledBits +
                          kCancelledBitsPerOrder * std::min(usualOrder, kMostOrderCounted)),
        precise(tape, bits, 0, disturbed, poll),
        team(std::move(givenTeam)),
        schedule(ScheduleFor(usualOrder)),
        leftOut(tape.lines.size(), false),
        arithmetic(bits),
        largest(tape.lines.size(), kUnknown),
        divisors(tape.lines.size()),
        resolutions(tape.lines.size()),
        sizes(tape.lines.size())
  {
    if constexpr (kIsRelaxed<Arithmetic>) convolutions.resize(tape.lines.size());
    if constexpr (Arithmetic::kDropsDigits) coarsest.assign(tape.lines.size(), -kInfinity);
    terms.reserve(tape.lines.size());
    logs.reserve(tape.lines.size());
    while (terms.size() < tape.lines.size()) {
      terms.push_back(arithmetic.TermsIn(&memory));
      logs.emplace_back(&memory);
    }
    const std::vector<bool> weighted = LinesNeedingWeights(tape);
    weightedRows.assign(weighted.size(), kNone);
    for (LineId id = 0; id < weighted.size(); ++id) {
      if (!weighted[id]) continue;
      weightedRows[id] = static_cast<std::uint32_t>(weightedTerms.size());
      weightedTerms.push_back(arithmetic.TermsIn(&memory));
    }
    PrepareForProducts(usualOrder);
    for (int member = 0; member < schedule.MemberCount(); ++member)
      members.push_back(
          std::make_unique<Member>(Operands(), schedule.Lines(member), bits, PollOf(member, poll)));
    PrepareWaves(usualOrder, poll);
    Reserve(usualOrder + 2);
    ConvertConstants();
  }

  void LeaveOut(const std::vector<bool>& lines, const HeldLines& held) override
  {
    precise.LeaveOut(lines, held);
    leftOut = lines;
  }

  void Begin(mpfr_srcptr time, std::span<const Real> states, bool backwards,
             long newScaleExponent) override
  {
    if (team != nullptr) {
      precise.BeginTogether(time, states, backwards, newScaleExponent, *team, schedule);
    } else {
      precise.Begin(time, states, backwards, newScaleExponent);
    }
    isRefined = false;
    rise = expectedRise;
    isBackwards = backwards;
    scaleExponent = newScaleExponent;
    order = 0;
    isStarted = false;
    resolvedOrder = -1;
  }

  void ExtendTo(int wanted) override
  {
    if (wanted > Arithmetic::kMostOrder) Refine();
    if (!isRefined && !isStarted) StartLines();
    if (isRefined) {
      precise.ExtendTo(wanted);
      return;
    }
    Reserve(wanted + 1);
    if (wanted <= order) return;
    ComputeTerms(order + 1, wanted);
    order = wanted;
  }

  int Order() const override { return isRefined ? precise.Order() : order; }

  double Log2(LineId line, int k) const override
  {
    return isRefined || !isStarted ? precise.Log2(line, k) : logs[line][k];
  }

  std::span<const double> Logs(LineId line) const override
  {
    if (isRefined || !isStarted) return precise.Logs(line);
    return {logs[line].data(), static_cast<std::size_t>(order) + 1};
  }

  double Log2Constant(ConstantId constant) const override { return precise.Log2Constant(constant); }
  std::span<const double> FactorLogs() const override { return precise.FactorLogs(); }

  void Sum(LineId line, mpfr_srcptr offset, mpfr_ptr result) const override
  {
    if (isRefined) {
      precise.Sum(line, offset, result);
    } else {
      members.front()->sums.Sum(ForSums(line), offset, result);
    }
  }

  void SumWithDerivative(LineId line, mpfr_srcptr offset, mpfr_ptr value,
                         mpfr_ptr derivative) const override
  {
    if (isRefined) {
      Series::SumWithDerivative(line, offset, value, derivative);
    } else {
      members.front()->sums.SumWithDerivative(ForSums(line), offset, value, derivative);
    }
  }

  void SumStates(mpfr_srcptr offset, std::span<Real> results,
                 std::span<unsigned char> areRounded) const override;

  void SumStatesWithDerivatives(mpfr_srcptr offset, std::span<Real> values,
                                std::span<Real> derivatives) const override;

  void Term(LineId line, int k, mpfr_ptr result) const override
  {
    if (isRefined || k == 0) {
      precise.Term(line, k, result);
    } else {
      arithmetic.ToNumber(arithmetic.Load(terms[line], k), result);
    }
  }

  std::unique_ptr<StateTerms> CopyOfStates() const override;

  double Resolution(LineId line) const override
  {
    if (isRefined || !isStarted) return -kInfinity;
    if (resolvedOrder != order) FindResolutions();
    return resolutions[line];
  }

  double ResolutionRise() const override { return isRefined ? 0 : rise; }

  void ExpectStep(double log2) override
  {
    if constexpr (Arithmetic::kDropsDigits) expectedRise = std::max(0.0, -log2);
  }

  double MissingBits(double log2, const Exactness& asked) override;

  bool IsRefined() const override { return isRefined; }

  void Refine() override
  {
    if (isRefined) return;
    std::ranges::fill(largest, kUnknown);
    isRefined = true;
    precise.ExtendTo(order);
  }

  std::span<const long> LargestTerms() const override { return largest; }

  void Expect(const std::vector<long>& largestTerms) override
  {
    largest = largestTerms;
    largest.resize(tape.lines.size(), kUnknown);
  }

 private:
  using Value = typename Arithmetic::Value;
  using Factor = typename Arithmetic::Factor;
  using Terms = typename Arithmetic::Terms;

  static constexpr bool kIsNarrow = std::is_same_v<Arithmetic, NarrowArithmetic>;

  static constexpr double kInfinity = std::numeric_limits<double>::infinity();
  static constexpr long kUnknown = std::numeric_limits<long>::min();
  /// Bits of the guard that a line may lose by the difference between the scale and the step.
  static constexpr double kMostLostBits = 21;
  /// Of these, what a line keeps for the largest term of a step when that of the step before tells
  /// how many digits it needs.
  static constexpr double kSparedBits = 17;
  /// The same with what cancels and what the operands pass on: some bits less than a run of the
  /// order 12 has beyond its tolerance, and in proportion one of the order 27.
  static constexpr double kMostCancelledBits = 24, kCancelledBitsPerOrder = 0.15;
  static constexpr int kMostOrderCounted = 27;
  /// By how many bits the second half of the terms may be larger than the first: rounding that is
  /// left of a cancellation stays about the same.
  static constexpr double kMostRiseBits = 8;
  /// What lines of a wave have in use at a time stays in a cache of a processor's own, also a small
  /// one; waves are for those of which all have more.
  static constexpr double kBytesOfGroup = 400'000, kBytesForWaves = 1'200'000;
  /// Terms of a state are sent for while so many before it are summed.
  static constexpr std::size_t kStatesAhead = 2;

  /// What a member of the team makes terms with.
  struct Member {
    Member(const LineOperands<Arithmetic>& operands, std::span<const LineId> lines,
           mpfr_prec_t bits, Poll poll)
        : recurrences(operands, lines, bits, std::move(poll)), sums(bits), reciprocal(bits + 64)
    {}
    BlockRecurrences<Arithmetic> recurrences;
    BlockSums<Arithmetic> sums;
    Real reciprocal;  // scratch
  };

  LineOperands<Arithmetic> Operands()
  {
    return {tape,      leftOut,          terms,    weightedTerms, weightedRows,
            constants, exponentsPlusOne, divisors, convolutions,  arrangement};
  }
  Poll PollOf(int member, const Poll& poll) const
  {
    if (member == 0) return poll;
    return [asked = team.get()] { asked->StopIfFailed(); };
  }
  /// Does part(member, round) for all members and rounds, on as many threads.
  template <class Part>
  void Together(std::size_t rounds, const Part& part) const
  {
    if (team != nullptr) {
      team->Run(rounds, part);
      return;
    }
    for (std::size_t round = 0; round < rounds; ++round) part(0, round);
  }

  void PrepareForProducts(int usualOrder);
  double BytesInUse(int usualOrder) const
  {
    return static_cast<double>(tape.lines.size()) * Arithmetic::BytesInUse(bits, usualOrder);
  }
  LineSchedule ScheduleFor(int usualOrder) const;
  void PrepareWaves(int usualOrder, const Poll& poll);
  void Reserve(int count);
  void ConvertConstants();
  void StartLines();
  bool StartLine(LineId id);
  void StartDivisor(LineId id, mpfr_ptr reciprocal);
  void ComputeTerms(int first, int last);
  void MakeOrders(int first, int last);
  /// Those first..last are still to be made, order after order.
  struct OrdersLeft {
    int first, last;
  };
  OrdersLeft MakeWaves(int first, int unlogged, int last);
  void ForgetSizesFrom(int behind);
  bool AreSteady() const;
  void FindLogs(LineId id, int first, int last);
  Terms& Weighted(LineId line) { return weightedTerms[weightedRows[line]]; }

  typename BlockSums<Arithmetic>::Line ForSums(LineId line) const
  {
    return {terms[line], Logs(line), precise.Number(line, 0)};
  }
  /// Calls visit(state, sums) for all states, each member with sums of its own.
  template <class Visit>
  void ForEachState(const Visit& visit) const
  {
    const auto visitAll = [&](int member, std::size_t first, std::size_t last) {
      BlockSums<Arithmetic>& sums = members[static_cast<std::size_t>(member)]->sums;
      for (std::size_t state = first; state < last; ++state) {
        if constexpr (kIsNarrow) {
          if (state + kStatesAhead < last) SendFor(terms[state + kStatesAhead], order + 1);
        }
        visit(state, sums);
      }
    };
    ForEachStretch(team.get(), tape.rightHandSides.size(), visitAll);
  }
  double FindLargest(double log2, const Exactness& asked);
  void FindResolutions() const;
  double OwnResolution(LineId id) const;
  double ResolutionOf(const Line& line, LineId id) const;

  const Tape& tape;
  mpfr_prec_t bits;
  double mostCancelledBits;
  MpfrSeries precise;
  std::shared_ptr<Team> team;  // null: one thread
  LineSchedule schedule;
  std::vector<bool> leftOut;  // by line
  Arithmetic arithmetic;
  std::pmr::monotonic_buffer_resource memory{LargePages()};  // of terms and logs
  std::vector<Terms> terms;
  std::vector<std::pmr::vector<double>> logs;  // by line: log2 of its terms
  std::vector<std::uint32_t> weightedRows;     // kNone where a line needs none
  std::vector<Terms> weightedTerms;            // j times term j
  std::vector<Factor> constants;               // by constant
  std::vector<Factor> exponentsPlusOne;        // by constant
  std::vector<typename LineOperands<Arithmetic>::Products> convolutions;  // by line
  std::vector<long> largest;     // by line: log2 of the largest term of the step before
  std::vector<double> coarsest;  // by line: log2 of what is small enough for a unit
  std::vector<Factor> divisors;  // by line: the reciprocal of what its terms divide by
  std::atomic<std::int64_t> arrangement = 0;
  std::vector<std::unique_ptr<Member>> members;
  std::optional<LineWaves> waves;              // where more terms are in use than a cache holds
  std::vector<std::unique_ptr<Member>> rests;  // by member: for what waves leave to it; or none
  mutable std::vector<double> resolutions;
  std::vector<double> sizes;  // by line: log2 of the largest term
  mutable int resolvedOrder = -1;
  bool isStarted = false;  // whether the terms 0 are in `terms`
  bool isRefined = false;
  bool isBackwards = false;
  long scaleExponent = 0;
  double expectedRise = 0;  // of the series that is begun next
  double rise = 0;          // how many bits less a term has than the one before
  int order = -1;
  int reserved = 0;  // so many terms of each line have room
};

}  // namespace varno::solve

#include "solve/series/block_series_terms.h"
