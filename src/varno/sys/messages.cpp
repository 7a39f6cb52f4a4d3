#include "varno/sys/messages.h"

#include <cstdlib>
#include <iostream>

namespace varno {

void Exit(ExitStatus status)
{
  std::exit(status);
}

void Fail(std::string_view text, ExitStatus status)
{
  std::clog << tag::kError << text << std::endl;
  Exit(status);
}

void RequireOutput()
{
  if (!std::cout) Fail("Cannot write the results to standard output");
}

void FinishOutput()
{
  std::cout.flush();
  RequireOutput();
}

}  // namespace varno
