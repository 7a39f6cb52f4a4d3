#pragma once

#include <string>
#include <vector>

#include "solve/library/solve.h"
#include "solve/model/build_model.h"
#include "solve/model/model.h"
#include "solve/source/sources.h"

namespace varno::solve {

/// What a Problem holds: the texts, and what they were understood as.
struct Problem::Implementation {
  /// Throws InputError.
  Implementation(std::string text, std::string name, std::vector<Setting> settings);

  Sources sources;
  std::vector<Setting> settings;
  Model model;
  std::string notes;
};

}  // namespace varno::solve
