#pragma once

#include <memory>
#include <optional>

#include "solve/integration/stepper.h"
#include "solve/model/model.h"
#include "solve/piecewise/pieces.h"
#include "solve/switching/switch_point.h"
#include "solve/tape/tape.h"

namespace varno::solve {

/// A model made ready for runs: one tape, or the pieces of a piecewise smooth model with events.
class Dynamics {
 public:
  /// Of a model whose parameters are bound, and which must outlive this, with its tape if it is
  /// smooth.
  Dynamics(const Model& model, std::optional<Tape> tape);
  Dynamics(const Dynamics&) = delete;
  Dynamics& operator=(const Dynamics&) = delete;

  /// Makes runs whose rows have so many digits. This must outlive them.
  MakeStepper Runs(int digits) const;
  /// The graph whose nodes name expressions in what runs throw.
  const Graph& ErrorGraph() const { return tape ? tape->graph : model.graph; }
  /// The tape of a smooth model; null of others.
  const Tape* SmoothTape() const { return tape ? &*tape : nullptr; }
  /// The piece at the start values, which lie at this time. Throws what Pieces::AtStart does.
  std::shared_ptr<const Piece> PieceAtStart(const Moment& start) const;
  /// log10 of the size of the constant that is farthest from 1.
  double DecimalsOfConstants() const;

 private:
  const Model& model;
  std::optional<Tape> tape;
  std::unique_ptr<Pieces> pieces;
};

}  // namespace varno::solve
