#pragma once

#include <memory>
#include <string>
#include <vector>

#include <varno/solve.h>

#include "solve/language/syntax.h"
#include "solve/model/model.h"
#include "solve/source/sources.h"

namespace varno::solve {

/// What a Problem holds: the texts, and what they were understood as.
struct Problem::Implementation {
  Sources sources;
  Syntax syntax;
  std::vector<std::string> settings;
  Model model;
  std::string notes;
};

}  // namespace varno::solve
