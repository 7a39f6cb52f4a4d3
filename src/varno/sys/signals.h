#pragma once

#include <csignal>

namespace varno {

/// Installs CatchTerm for SIGTERM and SIGINT, and CatchFault for SIGSEGV and SIGFPE. The program
/// does not call it, deliberately: a run keeps the default actions of all signals.
void InstallSignals();

/// Raises SIGSEGV like a fault of the processor: neither a signal mask nor the parent's wish to
/// ignore the signal stops it.
void RaiseSegmentationFault();

/// Asks the operator on standard error what to do and reads the answer from standard input: c
/// continues; p writes the current row and continues; x writes it and ends the process with status
/// 255; anything else, also the end of the input, ends it at once with status 255.
///
/// On purpose the row is asked for with its hold-back flag, so that only the matrix layout shows
/// values, and the text says SIGTERM for SIGINT too.
void CatchTerm(int signal);

/// Reports the fault and the execution path on standard output and ends the process, on purpose
/// with status 0.
void CatchFault(int signal, siginfo_t* info, void* context);

}  // namespace varno
