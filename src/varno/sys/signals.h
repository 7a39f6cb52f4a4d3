#pragma once

#include <csignal>
#include <iosfwd>

namespace varno {

/// What the prompt of CatchTerm shows of a run, of which this folder knows nothing.
struct RunReport {
  void (*writeTime)(std::ostream& out);
  void (*writeRow)(std::ostream& out);
};

/// Sets what the prompt shows; nothing before the first call.
void SetRunReport(const RunReport& report);

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
/// On purpose the text says SIGTERM for SIGINT too.
void CatchTerm(int signal);

/// Reports the fault and the execution path on standard output and ends the process, on purpose
/// with status 0.
void CatchFault(int signal, siginfo_t* info, void* context);

}  // namespace varno
