#include "varno/solver/run_report.h"

#include <csignal>
#include <string>

#include <gmp.h>
#include <gtest/gtest.h>

#include "arith/mpf.h"
#include "tests/varno/support/runtime_child.h"
#include "tests/varno/support/scoped_global.h"
#include "varno/expr/differential.h"
#include "varno/expr/number.h"
#include "varno/sys/signals.h"

namespace varno {

using arith::Mpf;

namespace {

/// What the prompt writes behind "TIME = " when the answer is `answer`.
std::string PromptWithAnswer(const std::string& answer)
{
  const auto run = [] {
    ReportRunAtPrompt();
    InstallSignals();
    std::signal(SIGCONT, SIG_IGN);
    std::raise(SIGTERM);
  };
  const std::string text = RunInChild(run, answer).err;
  const std::string start = "TIME = ";
  return text.substr(text.find(start) + start.size());
}

constexpr const char* kMenu = "#(SYS) e) exit, c) continue, p) print&continue, x) print&exit\n";

/// Three variables, in a matrix with lines of two values.
void SetUpMatrix(ScopedGlobal& global)
{
  for (const char* name : {"a", "b", "c"}) {
    const Expr::Ref variable(new Differential(name, Expr::Ref(new Number(0.0))));
    VariableOf(variable).SetStartValue(Mpf(0.5 * name[0] - 0.5 * 'a'));
    global->_EQUATIONS.emplace(name, variable);
  }
  global->_3DPOINTS = 2;
}

TEST(ReportRunAtPrompt, ShowsTheTimeInTheFormatOfTheOutput)
{
  ScopedGlobal global;
  mpf_set_d(global->_T, 1.25);
  global->_PRINTCHARS = 3;
  // Three digits after the point are padded to the width of 15.
  EXPECT_EQ(PromptWithAnswer("c"), std::string("       1.250e+00\n") + kMenu);
}

TEST(ReportRunAtPrompt, WritesOneMatrixInTheMatrixLayout)
{
  ScopedGlobal global;
  SetUpMatrix(global);
  // With the series of y' = 0 the value at the end of the step is the start value: 0, 0.5 and 1.
  const std::string matrix = "  0.00000000000e+00  5.00000000000e-01\n  1.00000000000e+00\n";
  for (const char* answer : {"p", "x"}) {
    EXPECT_EQ(PromptWithAnswer(answer), " 0.00000000000e+00\n" + (kMenu + matrix)) << answer;
  }
}

TEST(ReportRunAtPrompt, WritesNoValuesInTheTableLayout)
{
  ScopedGlobal global;
  SetUpMatrix(global);
  global->_3DPOINTS = 0;
  for (const char* answer : {"p", "x"}) {
    EXPECT_EQ(PromptWithAnswer(answer), std::string(" 0.00000000000e+00\n") + kMenu) << answer;
  }
}

}  // namespace
}  // namespace varno
