#pragma once

#include <string_view>

#include "solve/rows/text_sink.h"

namespace varno::solve {

/// What the command has to say beside its rows: messages, notes, progress and summary.
struct Console {
  TextSink& errors;  ///< standard error; failures to write there are nobody's concern
  bool errorsAreTerminal;

  /// A message of the program in a line of its own.
  void Say(std::string_view message) const;
  /// A text that brings its own lines; its last line end may be missing.
  void Print(std::string_view text) const;
};

}  // namespace varno::solve
