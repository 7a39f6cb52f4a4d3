#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "solve/language/syntax.h"
#include "solve/model/model.h"
#include "solve/source/diagnostics.h"
#include "solve/source/sources.h"

namespace varno::solve {

/// What changes a parameter or a start value, such as "mu=7", "x(0)=2", "y'(0)=1/3".
struct Setting {
  std::string text;
  std::string origin;  ///< what stands for it in messages: "--set"
};

/// Resolves a problem: names whatever their order, equations of higher order as systems of the
/// first, definitions and functions put in where they are used, start values, parameters.
///
/// The right side of a setting is a constant and may use parameters; the last one for a name wins.
/// The point must be the one of the text's start statements; where the text has none, settings
/// bring it in. Each becomes a source of its own.
///
/// Reports all mistakes, those of settings too; after an error the model is incomplete. A `syntax`
/// that was read with errors is looked through as far as it goes.
Model BuildModel(const Syntax& syntax, const std::vector<Setting>& settings, Sources& sources,
                 Diagnostics& diagnostics);

/// Reads and resolves the text with the number `source`. Throws ProblemError with all mistakes;
/// remarks that are no mistakes go to `diagnostics`.
Model ReadModel(std::uint32_t source, const std::vector<Setting>& settings, Sources& sources,
                Diagnostics& diagnostics);

/// Adds a constant expression, such as "10*pi" or "2*period", that may use the model's parameters;
/// `name` stands for the text in messages. Throws ProblemError.
NodeId AddConstant(Model& model, std::string text, std::string name, Sources& sources);

}  // namespace varno::solve
