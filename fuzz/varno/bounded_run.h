#pragma once

#include <iostream>
#include <streambuf>

#include "tests/varno/support/scoped_global.h"

namespace varno {

/// Thrown where the program would end: at an exit, an assertion, a division by zero or the root of
/// a negative number in GMP; and when a run has done more arithmetic than a fuzzer has time for, as
/// the exponential series of a large number does.
struct EndOfRun {};

/// A fresh record for each input, and ways out that a fuzzer survives.
///
/// The linker puts the functions of bounded_run.cpp in the place of exit and the like (--wrap), so
/// that the program itself knows nothing of fuzzers. They act like the originals outside of a run.
class BoundedRun {
 public:
  BoundedRun();
  ~BoundedRun();
  BoundedRun(const BoundedRun&) = delete;
  BoundedRun& operator=(const BoundedRun&) = delete;

 private:
  ScopedGlobal global;
};

/// To be called once before the first run: swallows all output, and limits memory and recursion.
void PrepareRuns();

}  // namespace varno
