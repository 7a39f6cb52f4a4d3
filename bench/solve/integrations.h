#pragma once

#include <functional>
#include <string>
#include <vector>

#include <mpfr.h>

#include "solve/integration/run_settings.h"
#include "solve/model/model.h"
#include "solve/number/real.h"
#include "solve/tape/tape.h"

namespace varno::solve {

/// An initial-value problem from 0 on.
struct Problem {
  std::string name, text, to;
};

/// Calls measure(problem, digits) for what the arguments of a command, [PROBLEM [DIGITS]], leave of
/// the problems of the tables in this folder, with 15, 60 and 250 digits each.
void MeasureProblems(int argc, char** argv,
                     const std::function<void(const Problem&, int digits)>& measure);

/// A problem, compiled.
struct CompiledProblem {
  explicit CompiledProblem(const Problem& problem);
  Model model;
  Tape tape;
};

/// Settings as the first run for so many digits has them.
RunSettings SettingsForDigits(int digits);

/// One run over the whole interval.
struct Integration {
  Integration(const CompiledProblem& problem, const std::string& to, const RunSettings& settings);

  std::vector<Real> states;  ///< at the end
  double seconds;            ///< processor time of the integration alone
  std::vector<int> orders;   ///< of its steps
  mpfr_prec_t bits;
};

/// The seconds of the fastest of some integrations alike: as many as take a third of a second, from
/// 3 to 50.
double LeastSeconds(const CompiledProblem& problem, const std::string& to,
                    const RunSettings& settings);

}  // namespace varno::solve
