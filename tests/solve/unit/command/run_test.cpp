#include "solve/command/run.h"

#include <csignal>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>

#include <gtest/gtest.h>

#include "solve/command/exit_status.h"
#include "tests/solve/support/scratch_path.h"
#include "tests/solve/support/string_sink.h"

namespace varno::solve {

namespace {

/// Runs the stand-in for the library, which knows one solution and reads from the text how to end.
class RunTest : public testing::Test {
 protected:
  RunTest()
  {
    std::filesystem::create_directory(folder);
    commandLine.file = folder + "/input.varno";
    commandLine.output = folder + "/rows";
    commandLine.options.digits = 3;
    commandLine.options.rows = RowsEvery{"1/4"};
    commandLine.quiet = true;
  }

  int RunWith(const std::string& text)
  {
    std::ofstream(commandLine.file) << text;
    return varno::solve::Run(commandLine, Console{errors, false}, ThisProcess());
  }

  std::string Rows() const
  {
    std::ostringstream text;
    text << std::ifstream(*commandLine.output).rdbuf();
    return text.str();
  }

  const ScratchPath scratch;
  const std::string& folder = scratch.String();
  CommandLine commandLine;
  StringSink errors;
};

}  // namespace

TEST_F(RunTest, RowsAndSummary)
{
  commandLine.quiet = false;
  commandLine.options.to = "1/2";
  EXPECT_EQ(RunWith(""), kSuccess);
  EXPECT_EQ(Rows(),
            "# t  x  v\n"
            "0      1.00e+00   0\n"
            "0.25   9.69e-01  -2.47e-01\n"
            "0.5    8.78e-01  -4.79e-01\n");
  EXPECT_EQ(errors.text,
            "3 steps, order 20, 128 bits\n"
            "3 digits, not verified: one run\n"
            "0.25 seconds\n");
}

TEST_F(RunTest, NotesAreForThoseWhoAreNotQuiet)
{
  EXPECT_EQ(RunWith("fake note"), kSuccess);
  EXPECT_EQ(errors.text, "");
  commandLine.quiet = false;
  EXPECT_EQ(RunWith("fake note"), kSuccess);
  EXPECT_TRUE(
      errors.text.starts_with(commandLine.file + ":1:1: note: something to remark\n5 steps"))
      << errors.text;
}

TEST_F(RunTest, WrongEquations)
{
  EXPECT_EQ(RunWith("fake error"), kFailure);
  EXPECT_EQ(errors.text, commandLine.file + ":1:1: error: the text is wrong\n");
  EXPECT_FALSE(std::filesystem::exists(*commandLine.output));
}

TEST_F(RunTest, WrongSetting)
{
  commandLine.settings = {"a=1", "b"};
  EXPECT_EQ(RunWith(""), kFailure);
  EXPECT_EQ(errors.text, "--set:1:1: error: no setting: 'b'\n");
}

TEST_F(RunTest, NoValueAtTheStartLeavesNoHeader)
{
  EXPECT_EQ(RunWith("fake start"), kFailure);
  EXPECT_EQ(errors.text, "file:1:1: error: no value at the start\n");
  EXPECT_EQ(Rows(), "");
}

TEST_F(RunTest, EarlyEndKeepsItsRowsAndHasASummary)
{
  commandLine.quiet = false;
  EXPECT_EQ(RunWith("fake end 0.5"), kEndedEarly);
  EXPECT_EQ(Rows(),
            "# t  x  v\n"
            "0      1.00e+00   0\n"
            "0.25   9.69e-01  -2.47e-01\n"
            "0.5    8.78e-01  -4.79e-01\n");
  EXPECT_TRUE(errors.text.starts_with("varno-solve: the solution ends at t = 0.5\n4 steps"))
      << errors.text;
}

TEST_F(RunTest, HeldRowsOfAnEarlyEndAreRightAndComeOut)
{
  commandLine.hold = true;
  commandLine.format = Format::kCsv;
  EXPECT_EQ(RunWith("fake end 0.25"), kEndedEarly);
  EXPECT_EQ(Rows(), "t,x,v\n0,1.00e+00,0\n0.25,9.69e-01,-2.47e-01\n");
}

TEST_F(RunTest, LackOfMemoryKeepsItsRows)
{
  EXPECT_EQ(RunWith("fake memory"), kEndedEarly);
  EXPECT_EQ(Rows(), "# t  x  v\n0      1.00e+00   0\n");
  EXPECT_EQ(errors.text, "varno-solve: out of memory\n");
}

TEST_F(RunTest, InterruptedBetweenTwoRows)
{
  EXPECT_EQ(RunWith("fake raise 0.5"), kSignalBase + SIGTERM);
  EXPECT_EQ(errors.text, "varno-solve: interrupted at t = 0.5\n");
  EXPECT_EQ(Rows(), "# t  x  v\n0      1.00e+00   0\n0.25   9.69e-01  -2.47e-01\n");
}

TEST_F(RunTest, ExplainsWithoutARun)
{
  commandLine.explain = true;
  commandLine.quiet = false;
  EXPECT_EQ(RunWith(""), kSuccess);
  EXPECT_EQ(Rows(), "x' = v\nv' = -x\n");
  EXPECT_EQ(errors.text, "");
}

TEST_F(RunTest, Json)
{
  commandLine.format = Format::kJson;
  commandLine.options.columns = {"v"};
  commandLine.options.to = "1/4";
  EXPECT_EQ(RunWith(""), kSuccess);
  EXPECT_EQ(Rows(), "{\"t\":\"0\",\"v\":\"0\"}\n{\"t\":\"0.25\",\"v\":\"-2.47e-01\"}\n");
}

}  // namespace varno::solve
