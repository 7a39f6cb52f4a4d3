#pragma once

#include <span>
#include <vector>

#include "solve/evaluation/evaluator.h"
#include "solve/integration/run_settings.h"
#include "solve/number/moment.h"
#include "solve/series/series.h"
#include "solve/tape/tape.h"
#include "solve/team/team.h"

namespace varno::solve {

/// Compares the derivative of a step's series with the right-hand sides, at points within the step:
/// the one test of a step that does not ask the terms whether they are enough.
///
/// The right-hand sides are evaluated from the expressions of the model by MPFR, operation by
/// operation, so that the recurrences are tested, too. The difference may be about 1000 tolerances
/// at order 23, and more at higher ones, where a step leaves some. It counts in units of the size
/// of the right-hand side, what it would be if nothing cancelled, or of its largest term: the
/// rounding of what does cancel is no defect.
class DefectCheck {
 public:
  /// A step, from 0 to `length` in units of the series' scale.
  struct Step {
    const Series& series;
    const Moment& begin;
    bool backwards;
    long scaleExponent;
    double lengthLog2;
    /// By right-hand side, what lines that were left out contribute at most; empty: none were.
    std::span<const Real> leftOut;
  };

  /// The members of a team, if there is one, share the work.
  DefectCheck(const Tape& tape, const RunSettings& settings, mpfr_prec_t bits,
              Team* team = nullptr);

  /// Whether the step passes at these places, in parts of its length.
  bool Passes(const Step& step, std::span<const double> places);
  mpfr_prec_t Bits() const { return bits; }

 private:
  /// The right-hand sides of some states, one behind the other.
  struct Part {
    std::size_t first, last;  // behind it
    Evaluator rightHandSides;
    bool hasValues, isSmall;
  };

  bool PassesAt(const Step& step, double place);
  void Evaluate(const Step& step);
  void FindTime(const Step& step);
  void Compare(Part& part);
  bool IsSmall(mpfr_srcptr difference, mpfr_srcptr value) const;
  void ComputeSizes(const Step& step);
  double AllowedLog2(const Step& step, std::size_t state) const;

  const Tape& tape;
  double allowedBits;  // -log2 of the defect allowed, relative to the size
  Team* team;
  std::vector<Part> parts;  // by member of the team
  bool usesTime;
  Real offset, time, advance;             // the point looked at
  std::vector<Real> states, derivatives;  // of the series there
  std::vector<double> derivativeSizes;    // log2
  mpfr_prec_t bits;
};

}  // namespace varno::solve
