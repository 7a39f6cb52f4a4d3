#pragma once

#include <vector>

#include "solve/tape/tape.h"

namespace varno::solve {

/// The lines whose terms are factors in sums of products of two series, by their numbers.
struct MultipliedLines {
  std::vector<bool> inProducts;  ///< in lines that are products and squares
  std::vector<bool> elsewhere;   ///< in quotients, powers and others
};

MultipliedLines LinesMultiplied(const Tape& tape);

}  // namespace varno::solve
