#pragma once

#include <stdexcept>
#include <string>
#include <vector>

#include "solve/source/place.h"
#include "solve/source/sources.h"

namespace varno::solve {

enum class Severity { kError, kNote };

/// One remark on a source text: where, what was wrong, and what would be right.
struct Diagnostic {
  Severity severity = Severity::kError;
  Place place;
  std::string message;
  /// "did you mean 'sigma'?", "powers are written x^y"; empty when there is none.
  std::string hint;
};

/// The remarks on one problem, in the order in which they were made.
class Diagnostics {
 public:
  void Error(Place place, std::string message, std::string hint = {});
  void Note(Place place, std::string message, std::string hint = {});

  bool HasErrors() const { return errors > 0; }
  const std::vector<Diagnostic>& All() const { return all; }

 private:
  std::vector<Diagnostic> all;
  int errors = 0;
};

/// All remarks as a compiler prints them, errors in the order of the text: "file:line:column:
/// error: message", the line itself, a caret under the place, the hint.
std::string Render(const Diagnostics& diagnostics, const Sources& sources);

/// A problem that cannot be solved as written. what() is the rendered text.
class ProblemError : public std::runtime_error {
 public:
  ProblemError(Diagnostics diagnostics, const Sources& sources);
  const Diagnostics& Remarks() const { return remarks; }

 private:
  Diagnostics remarks;
};

}  // namespace varno::solve
