#pragma once

#include <functional>
#include <utility>
#include <vector>

#include "solve/series/series.h"
#include "solve/series/term_store.h"

namespace varno::solve {

enum class Outcome;
class LineSchedule;
class Team;

/// The Taylor terms of a tape with one MPFR number for each term, all of the same precision.
///
/// The numbers in parentheses are those of docs/solve/recurrences.md.
class MpfrSeries final : public Series {
 public:
  MpfrSeries(const Tape& tape, mpfr_prec_t bits, int usualOrder, bool disturbed, Poll poll = {},
             const std::vector<CommonRoot>& roots = {});

  void LeaveOut(const std::vector<bool>& lines, const HeldLines& values) override
  {
    leftOut = lines;
    held = values;
  }
  void Begin(mpfr_srcptr time, std::span<const Real> states, bool backwards,
             long scaleExponent) override;
  /// The same by the members of a team, for a series without common roots.
  void BeginTogether(mpfr_srcptr time, std::span<const Real> states, bool backwards,
                     long scaleExponent, Team& team, const LineSchedule& schedule);
  void ExtendTo(int order) override;
  int Order() const override { return order; }
  double Log2(LineId line, int k) const override;
  std::span<const double> Logs(LineId line) const override;
  double Log2Constant(ConstantId constant) const override;
  std::span<const double> FactorLogs() const override { return factorLogs; }
  void Sum(LineId line, mpfr_srcptr offset, mpfr_ptr result) const override;
  void Term(LineId line, int k, mpfr_ptr result) const override;
  int CommonRootOrder(LineId line) const override { return rootOrders[line]; }

  /// Term k itself.
  mpfr_srcptr Number(LineId line, int k) const { return Terms(line) + k; }
  mpfr_srcptr Constant(ConstantId constant) const;
  /// A constant + 1, where it is the exponent of a power.
  mpfr_srcptr ExponentPlusOne(ConstantId constant) const { return powerExponentsPlusOne[constant]; }

 private:
  void ComputeConstants(bool disturbed);
  void FindLogsOfConstants();
  void AssignDerivatives();
  void SetHeadStarts();
  void CountProduct() const;

  void Forget(bool backwards, long scaleExponent);
  void StartLines(mpfr_srcptr time, std::span<const Real> states);
  void StartLine(LineId id, mpfr_srcptr time, std::span<const Real> states, mpfr_ptr scratch);
  void Start(LineId id, mpfr_srcptr time, std::span<const Real> states, mpfr_ptr scratch);
  void StartQuotient(const Line& line, int rootOrder, mpfr_ptr s);
  void StartRoot(const Line& line, int rootOrder, mpfr_ptr s);
  void StartFunction(const Line& line, mpfr_ptr s);
  bool StartPair(LineId id);
  void RequireValue(Outcome outcome, const Line& line) const;
  void Check(const Line& line, mpfr_srcptr s) const;

  void ComputeTerm(LineId id, int k);
  void ComputeTerms(int k);

  void AddFedQuotient(LineId quotient);
  bool IsFed(LineId id) const;
  void SolveFedQuotients(int k, const std::function<void()>& computeTerms);
  std::vector<Real> Residuals(int k, const std::vector<Real>& guesses,
                              const std::function<void()>& computeTerms);
  void Recurrence(LineId id, mpfr_ptr s, int k);
  void Combination(const Line& line, mpfr_ptr s, int k, mpfr_ptr scratch);
  void SetScaled(const Factor& factor, mpfr_ptr result, mpfr_srcptr a);
  void AddScaled(const Factor& factor, mpfr_ptr sum, int k, mpfr_ptr scratch);
  void Square(mpfr_srcptr a, mpfr_ptr s, int k);
  void Quotient(const Line& line, int rootOrder, mpfr_ptr s, int k);
  void SquareRoot(const Line& line, int rootOrder, mpfr_ptr s, int k);
  void Power(const Line& line, mpfr_ptr s, int k);
  void IntegralOfProduct(const Line& line, mpfr_ptr s, int k);
  void IntegralOfQuotient(const Line& line, LineId id, mpfr_ptr s, int k);
  void Angle(const Line& line, LineId id, mpfr_ptr s, int k);
  void AdvanceState(const Line& line, mpfr_ptr x, int k);

  /// sum = sum over j = first..last of a[j] b[k-j]; from 0 to k it is (4)
  void Convolve(mpfr_srcptr a, mpfr_srcptr b, int first, int last, int k, mpfr_ptr sum);

  /// The terms of a line, and j times them where a recurrence needs these.
  mpfr_ptr Terms(LineId line) { return terms.Row(line); }
  mpfr_srcptr Terms(LineId line) const { return terms.Row(line); }
  mpfr_ptr DerivativeTerms(LineId line) { return derivatives.Row(derivativeRows[line]); }

  const Tape& tape;
  mpfr_prec_t bits;
  std::vector<bool> leftOut;  // by line
  HeldLines held;             // of these
  TermStore terms;
  std::vector<std::uint32_t> derivativeRows;  // kNone where a line needs none
  TermStore derivatives;
  std::vector<Real> constants;
  std::vector<double> constantLogs, factorLogs;  // log2 of the sizes
  std::vector<Real> powerExponentsPlusOne;       // by constant; 0 where it is no exponent
  Real scale;
  Real zero, product, sum, weighted;
  int order = -1;
  Poll poll;
  mutable int products = 0;                       // since the latest poll
  mutable std::vector<std::vector<double>> logs;  // by line: of the first terms, as asked for
  // At common roots: the orders of these by line, and how many terms each line is ahead, because a
  // quotient of order m needs m terms more of its operands.
  std::vector<int> rootOrders;
  std::vector<int> headStarts;
  int longestHeadStart = 0;
  // At quotients that feed themselves: these, and the lines that their operands are made of, which
  // are one term ahead.
  std::vector<LineId> fedQuotients, linesAhead;
};

}  // namespace varno::solve
