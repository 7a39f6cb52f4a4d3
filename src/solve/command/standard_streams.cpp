#include "solve/command/standard_streams.h"

#include <fcntl.h>
#include <unistd.h>

namespace varno::solve {

namespace {

bool Fill(int number, int mode)
{
  return ::fcntl(number, F_GETFD) >= 0 || ::open("/dev/null", mode) == number;
}

}  // namespace

bool FillStandardStreams()
{
  // In this order: a new file gets the lowest free number. The modes are the wrong ones on purpose,
  // so that nothing seems to be read or written.
  return Fill(STDIN_FILENO, O_WRONLY) && Fill(STDOUT_FILENO, O_RDONLY) &&
         Fill(STDERR_FILENO, O_RDONLY);
}

}  // namespace varno::solve
