#include <csignal>
#include <cstdlib>
#include <string>
#include <unistd.h>
#include <vector>

#include "solve/command/console.h"
#include "solve/command/exit_status.h"
#include "solve/command/memory.h"
#include "solve/command/mpi_job.h"
#include "solve/command/program.h"
#include "solve/command/standard_error.h"
#include "solve/command/standard_streams.h"

int main(int argc, char** argv)
{
  using namespace varno::solve;
  if (!FillStandardStreams()) return kFailure;
  // A closed pipe is noticed where it is written to.
  std::signal(SIGPIPE, SIG_IGN);
  ThrowWhereMemoryIsShort();
  GrowHeapsByLargePieces();

  StandardError errors;
  const Console console{errors, ::isatty(STDERR_FILENO) != 0};
  if (const MpiJob job = MpiJobOf(std::getenv); job.ranks > 1) {
    if (job.rank == 0)
      console.Say("this program does not know of the " + std::to_string(job.ranks) +
                  " ranks that mpirun has started; varno-solve-mpi does");
    return kFailure;
  }
  const std::vector<std::string> arguments(argv + (argc > 0 ? 1 : 0), argv + argc);
  return RunProgram(arguments, console);
}
