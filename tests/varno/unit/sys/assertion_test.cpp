#include "varno/sys/assertion.h"

#include <cerrno>
#include <csignal>

#include <gtest/gtest.h>

namespace varno {
namespace {

constexpr AssertionSite kSite = {"functions", 57, "void sin(__mpf_struct (&)[1], __mpf_struct*)"};

TEST(Assert, KeptPromiseDoesNothing)
{
  Assert(true, "1 == 1", kSite);
}

TEST(Assert, BrokenPromiseAbortsWithTheTextOfTheCLibrary)
{
  const std::string program = program_invocation_short_name;
  EXPECT_EXIT(Assert(false, "Expr::Global->_PI_2 > 0", kSite), testing::KilledBySignal(SIGABRT),
              testing::Eq(program + ": functions:57: void sin(__mpf_struct (&)[1], __mpf_struct*): "
                                    "Assertion `Expr::Global->_PI_2 > 0' failed.\n"));
}

}  // namespace
}  // namespace varno
