#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "solve/library/solve.h"

namespace varno::solve {

/// A name with the values that it takes.
struct SweptName {
  std::string name;  ///< as in a setting: "mu", "y'(0)"
  SweptValues values;
};

/// Names that change together, as the columns of a table do: all have the same number of values.
using SweepAxis = std::vector<SweptName>;

/// The values of all swept names in one run.
struct Combination {
  std::vector<SweptValue> values;  ///< in the order of Sweep::Names
  std::vector<std::string> texts;  ///< of the values
};

/// All combinations of the values of several axes. The last axis changes from run to run, the first
/// one slowest.
class Sweep {
 public:
  /// At least one axis, none of them empty. Throws InputError where there are more runs than can be
  /// counted.
  explicit Sweep(std::vector<SweepAxis> axes);

  std::int64_t Count() const { return count; }
  const std::vector<std::string>& Names() const { return names; }
  Combination At(std::int64_t run) const;

 private:
  std::vector<SweepAxis> axes;
  std::vector<std::string> names;
  std::int64_t count = 1;
};

}  // namespace varno::solve
