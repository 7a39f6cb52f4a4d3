#include "fuzz/varno/bounded_run.h"

#include <gmp.h>

#include "varno/sys/memory.h"
#include "varno/sys/stack_guard.h"

namespace varno {

namespace {

constexpr long kMostOperations = 300'000;
constexpr std::size_t kMostBytes = std::size_t{256} << 20;

bool running = false;
long operations = 0;

/// Formats everything, since only a stream that takes output formats it, and keeps nothing.
class Swallower : public std::streambuf {
  int overflow(int character) override { return traits_type::not_eof(character); }
  std::streamsize xsputn(const char*, std::streamsize count) override { return count; }
};

void CountOperation()
{
  if (running && ++operations > kMostOperations) throw EndOfRun();
}

void EndRunIf(bool condition)
{
  if (running && condition) throw EndOfRun();
}

}  // namespace

BoundedRun::BoundedRun()
{
  operations = 0;
  running = true;
}

BoundedRun::~BoundedRun()
{
  running = false;
}

void PrepareRuns()
{
  static Swallower swallower;
  std::cout.rdbuf(&swallower);
  std::clog.rdbuf(&swallower);
  GuardStack();
  InstallMemoryLimits(kMostBytes);
}

}  // namespace varno

// NOLINTBEGIN(bugprone-reserved-identifier): the names that --wrap asks for
extern "C" {

[[noreturn]] void __real_exit(int status);
[[noreturn]] void __wrap_exit(int status)
{
  varno::EndRunIf(true);
  __real_exit(status);
}

[[noreturn]] void __real___assert_fail(const char* assertion, const char* file, unsigned line,
                                       const char* function);
[[noreturn]] void __wrap___assert_fail(const char* assertion, const char* file, unsigned line,
                                       const char* function)
{
  varno::EndRunIf(true);
  __real___assert_fail(assertion, file, line, function);
}

void __real___gmpf_add(mpf_ptr result, mpf_srcptr a, mpf_srcptr b);
void __wrap___gmpf_add(mpf_ptr result, mpf_srcptr a, mpf_srcptr b)
{
  varno::CountOperation();
  __real___gmpf_add(result, a, b);
}

void __real___gmpf_sub(mpf_ptr result, mpf_srcptr a, mpf_srcptr b);
void __wrap___gmpf_sub(mpf_ptr result, mpf_srcptr a, mpf_srcptr b)
{
  varno::CountOperation();
  __real___gmpf_sub(result, a, b);
}

void __real___gmpf_div(mpf_ptr result, mpf_srcptr a, mpf_srcptr b);
void __wrap___gmpf_div(mpf_ptr result, mpf_srcptr a, mpf_srcptr b)
{
  varno::EndRunIf(mpf_sgn(b) == 0);
  __real___gmpf_div(result, a, b);
}

void __real___gmpf_ui_div(mpf_ptr result, unsigned long a, mpf_srcptr b);
void __wrap___gmpf_ui_div(mpf_ptr result, unsigned long a, mpf_srcptr b)
{
  varno::EndRunIf(mpf_sgn(b) == 0);
  __real___gmpf_ui_div(result, a, b);
}

void __real___gmpf_sqrt(mpf_ptr result, mpf_srcptr a);
void __wrap___gmpf_sqrt(mpf_ptr result, mpf_srcptr a)
{
  varno::EndRunIf(mpf_sgn(a) < 0);
  __real___gmpf_sqrt(result, a);
}

}  // extern "C"
// NOLINTEND(bugprone-reserved-identifier)
