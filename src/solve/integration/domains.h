#pragma once

#include <optional>
#include <vector>

#include "solve/integration/line_polynomial.h"
#include "solve/roots/isolation.h"
#include "solve/roots/polynomial.h"
#include "solve/series/series.h"
#include "solve/tape/tape.h"

namespace varno::solve {

/// The operand that a line needs to be different from 0: its divisor, radicand or base; kNone for
/// lines that take every operand.
LineId DomainOf(const Line& line);

/// A place within a step that no step may pass.
struct RootAhead {
  std::vector<LineId> lines;  ///< that are 0 there
  Real place;                 ///< from the start of the step, in units of the series' scale
  Real error;                 ///< how far it may be off
  /// Whether the lines that need these to be different from 0 may go on behind it, for all that
  /// their terms tell: quotients whose dividends are 0, too, and square roots that touch 0.
  bool mayGoOn;
};

/// Finds where the lines of a tape leave their domains.
///
/// Most divisors are shown to have no root in a step by their first term, which outweighs the
/// others; of the rest all roots are isolated.
class Domains {
 public:
  explicit Domains(const Tape& tape);

  struct Step : SeriesStep {
    const std::vector<bool>* leftOut = nullptr;  ///< lines that do not count; null: none

    bool LeavesOut(LineId line) const { return leftOut != nullptr && (*leftOut)[line]; }
  };
  /// The first root in a step.
  std::optional<RootAhead> FirstRoot(const Step& step) const;

 private:
  /// A root of one line.
  struct Root {
    LineId line;
    RootInterval interval;
    UncertainValue place;  ///< as a part of the step
  };

  void AddRoot(const Step& step, LineId line, std::vector<Root>& roots) const;
  bool MayGoOn(const Step& step, const Root& root) const;

  const Tape& tape;
  std::vector<LineId> lines;               // that must not be 0, in order
  std::vector<std::vector<LineId>> users;  // for each of these, the lines that need it
};

}  // namespace varno::solve
