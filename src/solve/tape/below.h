#pragma once

#include <vector>

#include "solve/tape/tape.h"

namespace varno::solve {

/// The lines that the terms of a line are made of: those of a state are its right-hand side.
std::vector<LineId> Operands(const Tape& tape, LineId line);

/// For each line of the tape, whether the terms of one of these depend on it: they themselves, and
/// what is below them, through derivatives, too.
std::vector<bool> LinesBelow(const Tape& tape, const std::vector<LineId>& lines);

/// These lines and what term k of them is made of in terms k of others, in order: the states end
/// it.
std::vector<LineId> LinesAtOnce(const Tape& tape, const std::vector<LineId>& lines);

/// The tape with all lines but those below these made the constant 0: their terms are the same for
/// less work. The numbers of the lines stay.
Tape OnlyBelow(const Tape& tape, const std::vector<LineId>& lines);

}  // namespace varno::solve
