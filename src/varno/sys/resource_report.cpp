#include "varno/sys/resource_report.h"

#include <iostream>

#include "varno/sys/messages.h"

namespace varno {

namespace {

rusage startUsage;
rusage endUsage;

struct Duration {
  int seconds;
  int microseconds;
};

Duration Between(const timeval& start, const timeval& end)
{
  Duration difference{static_cast<int>(end.tv_sec - start.tv_sec),
                      static_cast<int>(end.tv_usec - start.tv_usec)};
  if (difference.microseconds < 0) {
    difference.microseconds += 1'000'000;
    if (difference.seconds > 0) --difference.seconds;
  }
  return difference;
}

}  // namespace

void StartUsage()
{
  getrusage(RUSAGE_SELF, &startUsage);
}

void EndUsage()
{
  getrusage(RUSAGE_SELF, &endUsage);
}

UsageDifference DifferenceOf(const rusage& start, const rusage& end)
{
  const Duration user = Between(start.ru_utime, end.ru_utime);
  const Duration system = Between(start.ru_stime, end.ru_stime);
  return {user.seconds, user.microseconds, system.seconds, system.microseconds};
}

void PrintUsage(const UsageDifference& used)
{
  std::clog << tag::kInfo << "utime=" << used.userSeconds << 's' << used.userMicroseconds
            << "us \tstime=" << used.systemSeconds << 's' << used.systemMicroseconds << "us\n"
            << std::flush;
}

void PrintUsage()
{
  PrintUsage(DifferenceOf(startUsage, endUsage));
}

}  // namespace varno
