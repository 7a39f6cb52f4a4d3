#pragma once

#include <map>
#include <memory>
#include <string>

#include "solve/model/model.h"
#include "solve/number/moment.h"
#include "solve/source/sources.h"

namespace varno::solve {

/// Reads the constant expressions of options, such as --to 10*pi, and the constants of a model, as
/// exact times. Equal constants are the same one in all moments, so that their difference is 0.
class OptionConstants {
 public:
  /// The model's parameters are bound; both must outlive this and the moments that it makes.
  OptionConstants(Model& model, Sources& sources) : model(model), sources(sources) {}

  /// Throws InputError, in which `option` names the text.
  Moment Read(const std::string& option, const std::string& text);
  /// Throws InputError where the constant has no value.
  Moment Of(NodeId constant);

 private:
  Model& model;
  Sources& sources;
  std::map<NodeId, std::shared_ptr<const Constant>> known;
};

}  // namespace varno::solve
