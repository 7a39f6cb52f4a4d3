#pragma once

#include <sys/resource.h>

namespace varno {

/// Processor time used between the two marks of a run. Seconds and microseconds as plain ints.
struct UsageDifference {
  int userSeconds;
  int userMicroseconds;
  int systemSeconds;
  int systemMicroseconds;
};

/// Mark the begin and the end of the integration.
void StartUsage();
void EndUsage();

/// The time between two marks. On purpose a second is borrowed for negative microseconds only from
/// a positive number of seconds.
UsageDifference DifferenceOf(const rusage& start, const rusage& end);

/// Writes a time as commentary: "#(INFO) utime=1s5000us \tstime=0s200us".
void PrintUsage(const UsageDifference& used);
/// The same for the time between the marks.
void PrintUsage();

}  // namespace varno
