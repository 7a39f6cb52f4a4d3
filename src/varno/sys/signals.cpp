#include "varno/sys/signals.h"

#include <cstdio>
#include <execinfo.h>
#include <iostream>
#include <ucontext.h>

#include "varno/sys/messages.h"

namespace varno {

namespace {

RunReport runReport = {[](std::ostream&) {}, [](std::ostream&) {}};

/// The instruction that was interrupted.
void* InterruptedInstruction(void* context)
{
#if defined(__x86_64__)
  const auto* const machine = static_cast<ucontext_t*>(context);
  // NOLINTNEXTLINE(performance-no-int-to-ptr): the register holds an address
  return reinterpret_cast<void*>(machine->uc_mcontext.gregs[REG_RIP]);
#elif defined(__aarch64__)
  const auto* const machine = static_cast<ucontext_t*>(context);
  // NOLINTNEXTLINE(performance-no-int-to-ptr): the register holds an address
  return reinterpret_cast<void*>(machine->uc_mcontext.pc);
#else
  static_cast<void>(context);
  return nullptr;
#endif
}

void InstallFaultHandler(int signal)
{
  struct sigaction action {};
  sigemptyset(&action.sa_mask);
  action.sa_flags = SA_RESTART | SA_SIGINFO;
  action.sa_sigaction = CatchFault;
  sigaction(signal, &action, nullptr);
}

}  // namespace

void SetRunReport(const RunReport& report)
{
  runReport = report;
}

void InstallSignals()
{
  std::signal(SIGTERM, CatchTerm);
  std::signal(SIGINT, CatchTerm);
  InstallFaultHandler(SIGSEGV);
  InstallFaultHandler(SIGFPE);
}

void RaiseSegmentationFault()
{
  struct sigaction action {};
  sigaction(SIGSEGV, nullptr, &action);
  if (action.sa_handler == SIG_IGN) std::signal(SIGSEGV, SIG_DFL);
  sigset_t blocked;
  sigemptyset(&blocked);
  sigaddset(&blocked, SIGSEGV);
  sigprocmask(SIG_UNBLOCK, &blocked, nullptr);
  std::raise(SIGSEGV);
}

// The handlers call streams and printf, which are not safe in a handler; that is accepted: the
// process is about to end, or the operator waits at a prompt.

void CatchTerm(int)
{
  std::clog << "\n#(SYS) Caught SIGTERM. Dumping values & bailing out \n#(SYS) TIME = ";
  runReport.writeTime(std::clog);
  std::clog << std::endl;
  std::clog << "#(SYS) e) exit, c) continue, p) print&continue, x) print&exit" << std::endl;
  char answer = 'e';
  std::cin >> answer;
  switch (answer) {
    case 'c':
    case 'C':
      return;
    case 'p':
    case 'P':
      runReport.writeRow(std::clog);
      std::raise(SIGCONT);
      return;
    case 'x':
    case 'X':
      runReport.writeRow(std::clog);
      Exit(kStoppedByOperator);
    default:
      Exit(kStoppedByOperator);
  }
}

void CatchFault(int signal, siginfo_t* info, void* context)
{
  constexpr int kMostEntries = 16;
  void* const instruction = InterruptedInstruction(context);
  if (signal == SIGSEGV) {
    std::printf("\n#(SYS) Got signal %d, faulty address is %p, from %p\n", signal, info->si_addr,
                instruction);
  } else {
    std::printf("\n#(SYS) Got signal %d\n", signal);
  }
  void* path[kMostEntries];
  const int entries = backtrace(path, kMostEntries);
  // Entry 0 is this handler, entry 1 the frame that delivers signals: show the fault in its place.
  if (entries > 1) path[1] = instruction;
  char** const symbols = backtrace_symbols(path, entries);
  std::puts("#(SYS) [bt] Execution path:");
  for (int i = 1; i < entries; ++i) std::printf("#(SYS) [bt] %s\n", symbols[i]);
  Exit(kSuccess);
}

}  // namespace varno
