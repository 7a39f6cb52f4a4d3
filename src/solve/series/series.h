#pragma once

#include <limits>
#include <memory>
#include <span>
#include <vector>

#include "solve/number/real.h"
#include "solve/series/poll.h"
#include "solve/tape/held_lines.h"
#include "solve/tape/tape.h"

namespace varno::solve {

class Team;

/// How exact the terms of a series are to be.
struct Exactness {
  double bits;  ///< each line is to be as exact as numbers of so many bits
  /// By line, log2: of one that is smaller, beside this; empty where there is none.
  std::span<const double> leastSizes = {};
};

/// The Taylor terms of the states of a tape, its first lines, about one point in time: see Series.
class StateTerms {
 public:
  virtual ~StateTerms() = default;

  /// The highest order computed.
  virtual int Order() const = 0;
  /// log2 |term k|, right to about 1e-8: -infinity for 0, +infinity for what is no number.
  virtual double Log2(LineId line, int k) const = 0;
  /// The same for all terms 0..Order().
  virtual std::span<const double> Logs(LineId line) const = 0;
  /// Sets result to the sum of term k * offset^k, k = 0..Order(): the value at start + offset *
  /// scale. Not on several threads at once.
  virtual void Sum(LineId line, mpfr_srcptr offset, mpfr_ptr result) const = 0;
  /// Sets result to term k.
  virtual void Term(LineId line, int k, mpfr_ptr result) const = 0;
  /// The states apart from a series, which may be begun anew then; null where it must stay.
  virtual std::unique_ptr<StateTerms> CopyOfStates() const { return nullptr; }
};

/// The Taylor terms of all lines of a tape about one point in time.
///
/// Term k of a line u is scale^k u^(k) / k!, where scale = +-2^exponent is the unit in which time
/// is counted: with a scale near the step the terms fall, and the sign makes a run backwards look
/// like one forwards. This is the one place where the arithmetic of a run is chosen; everything
/// around it asks for magnitudes and sums only.
class Series : public StateTerms {
 public:
  /// From the next Begin on, the lines marked are not computed, but count as constants: as these
  /// where they are held, as 0 else. One entry for each line, none of them a state; at first no
  /// line is left out.
  virtual void LeaveOut(const std::vector<bool>& lines, const HeldLines& held) = 0;
  /// Forgets all terms and computes term 0 of every line. Throws DomainError where a line has no
  /// value or, at a root or power of 0, no Taylor series.
  virtual void Begin(mpfr_srcptr time, std::span<const Real> states, bool backwards,
                     long scaleExponent) = 0;
  /// Computes the terms up to this order; those that are there stay.
  virtual void ExtendTo(int order) = 0;
  // What StateTerms has of states a series has of all lines. Logs are valid until more terms are
  // computed or others begun.

  /// log2 |constant|; -infinity for kNone.
  virtual double Log2Constant(ConstantId constant) const = 0;
  /// log2 |factor| of Tape::factors, in their places.
  virtual std::span<const double> FactorLogs() const = 0;
  /// Sum with the derivative by the offset.
  virtual void SumWithDerivative(LineId line, mpfr_srcptr offset, mpfr_ptr value,
                                 mpfr_ptr derivative) const;
  /// Sum of all states, which are the first lines, with whether each is rounded; called where a
  /// series may be extended.
  virtual void SumStates(mpfr_srcptr offset, std::span<Real> results,
                         std::span<unsigned char> areRounded) const;
  /// The same with the derivatives by the offset.
  virtual void SumStatesWithDerivatives(mpfr_srcptr offset, std::span<Real> values,
                                        std::span<Real> derivatives) const;
  /// The order of the common root that the line begins with: MakeSeriesAtRoot.
  virtual int CommonRootOrder(LineId) const { return 0; }

  /// log2 of what the terms k > 0 of a line, whatever their own size, may be wrong by, but for k
  /// times ResolutionRise(): a term that is not 0 but smaller cannot be told from others that
  /// small. -infinity where every term has its own precision.
  virtual double Resolution(LineId /*line*/) const
  {
    return -std::numeric_limits<double>::infinity();
  }
  /// By how much more a term may be wrong than the one before, as log2.
  virtual double ResolutionRise() const { return 0; }
  /// Tells about how long the next step is, 2^log2 units of the scale: from the next Begin on terms
  /// need be exact over such a step, not over a longer one.
  virtual void ExpectStep(double /*log2*/) {}
  /// How many bits numbers lack so that the terms are as exact as asked for over a step of 2^log2
  /// units of the scale: 0 if they are. If not, a scale near the step helps, or Refine; or a series
  /// with so many bits more, if that is finite.
  virtual double MissingBits(double /*log2*/, const Exactness& /*asked*/) { return 0; }
  /// Gives every term its own precision, whatever that costs, until the next Begin.
  virtual void Refine() {}
  /// Whether every term has it.
  virtual bool IsRefined() const { return true; }

  /// For each line log2 of its largest term over a step, where the series was exact enough for
  /// one; empty where that is not asked for.
  virtual std::span<const long> LargestTerms() const { return {}; }
  /// Tells what was found so about the step before, for the next Begin; empty where nothing was.
  /// Results depend on it, within the resolution.
  virtual void Expect(const std::vector<long>& /*largestTerms*/) {}
};

/// A line that begins at a root which cancels: a quotient, or an integral of one, both parts of
/// which begin with `order` terms of 0; the square root of a series that begins with 2 order of
/// them. sin(t)/t at 0 is one of order 1.
struct CommonRoot {
  LineId line;
  int order;
  /// Of a quotient of order 1: its dividend is made of it, as y of y/t in y' = 1 - 2 y/t. Each of
  /// its terms solves a linear equation.
  bool feedsItself = false;
};

/// A series for a tape, which must outlive it, with at least this precision. Throws DomainError
/// where a constant of the tape has no value. `disturbed` moves constants that are rounded
/// (evaluation/disturbance.h). `poll`, if there is one, is called while terms are computed or
/// summed; what it throws leaves the series to be begun again. The members of a team share the
/// work, for the same terms; none: one thread does it. Then a series may be begun and extended only
/// where a job of the team may be.
std::unique_ptr<Series> MakeSeries(const Tape& tape, mpfr_prec_t bits, int usualOrder,
                                   bool disturbed = false, const Poll& poll = {},
                                   std::shared_ptr<Team> team = nullptr);

/// The most bits for which MakeSeries takes numbers no longer than for these.
mpfr_prec_t MostBitsAsCheapAs(mpfr_prec_t bits);

/// The same as MakeSeries about a point where lines begin at common roots: what their operands have
/// there, in the terms that are 0 but for rounding, is left out, and the terms that follow are
/// divided, or the root of them taken, the positive one ahead. No such line may depend on itself by
/// its operands, but all of them may be quotients that feed themselves, whose operands are exactly
/// 0: Begin throws DomainError where their solution is not unique. The first term of the divisor or
/// radicand that counts must not be 0 (positive).
std::unique_ptr<Series> MakeSeriesAtRoot(const Tape& tape, mpfr_prec_t bits, int usualOrder,
                                         bool disturbed, const std::vector<CommonRoot>& roots,
                                         Poll poll = {});

}  // namespace varno::solve
