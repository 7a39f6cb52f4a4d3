#pragma once

#include <optional>
#include <string>
#include <vector>

#include "solve/command/command_line.h"
#include "solve/command/problem_files.h"
#include "solve/rows/text_digest.h"
#include "solve/sweep/sweep_state.h"

namespace varno::solve {

/// Everything that another process needs to go on with a run or a sweep.
struct SavedState {
  std::vector<std::string> options;  ///< CommandLine::given
  std::string file;                  ///< CommandLine::file
  Inputs inputs;
  TextDigest rows;                  ///< of a run: what was written
  std::optional<SweepState> sweep;  ///< of a sweep
};

/// The state of what has not begun.
SavedState InitialState(const CommandLine& commandLine, const Inputs& inputs);

/// A state as a text of JSON, and back. ParseState throws InputFileError, which names `name`, where
/// the text is no state or has been damaged.
std::string StateText(const SavedState& state);
SavedState ParseState(const std::string& text, const std::string& name);

/// Puts a state into a file in one go: whatever happens, the file holds the old state or the new
/// one. Throws OutputError.
void WriteState(const std::string& path, const SavedState& state);

}  // namespace varno::solve
