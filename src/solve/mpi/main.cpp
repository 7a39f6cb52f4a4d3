#include <csignal>
#include <string>
#include <unistd.h>
#include <vector>

#include "solve/command/console.h"
#include "solve/command/exit_status.h"
#include "solve/command/memory.h"
#include "solve/command/program.h"
#include "solve/command/standard_error.h"
#include "solve/command/standard_streams.h"
#include "solve/mpi/coordinator.h"
#include "solve/mpi/ranks.h"
#include "solve/mpi/worker.h"

int main(int argc, char** argv)
{
  using namespace varno::solve;
  if (!FillStandardStreams()) return kFailure;
  std::signal(SIGPIPE, SIG_IGN);
  ThrowWhereMemoryIsShort();
  GrowHeapsByLargePieces();

  Ranks ranks(argc, argv);
  if (ranks.Rank() > 0) {
    Work(ranks);
    return kSuccess;
  }
  StandardError errors;
  const Console console{errors, ::isatty(STDERR_FILENO) != 0};
  const std::vector<std::string> arguments(argv + (argc > 0 ? 1 : 0), argv + argc);
  Coordinator coordinator(ranks);
  const int status = RunProgram(arguments, console, coordinator.Host());
  if (!coordinator.Dismiss()) Ranks::Abort(status);
  return status;
}
