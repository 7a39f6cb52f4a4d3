#include "varno/solver/driver.h"

#include <cstdlib>
#include <string>
#include <unistd.h>
#include <vector>

#include <gtest/gtest.h>

#include "tests/support/temp_home.h"
#include "tests/varno/support/runtime_child.h"
#include "tests/varno/support/scoped_global.h"

namespace varno {

using support::TempHome;

namespace {

class Driver : public testing::Test {
 protected:
  /// A run of the program in a process of its own, with its exit status.
  static ChildOutcome Run(std::vector<std::string> arguments, const std::string& input = "")
  {
    const auto run = [&arguments] {
      arguments.insert(arguments.begin(), "varno");
      std::vector<char*> argv;
      for (std::string& argument : arguments) argv.push_back(argument.data());
      argv.push_back(nullptr);
      optind = 0;
      std::exit(RunProgram(static_cast<int>(arguments.size()), argv.data()));
    };
    return RunInChild(run, input);
  }

  const ScopedGlobal global;
  const TempHome home;
};

TEST_F(Driver, GoesThroughTheStagesInOrder)
{
  const ChildOutcome run = Run({home.Write("in", "x' = 1;")});
  EXPECT_EQ(run.exitStatus, 0);
  EXPECT_EQ(run.out.substr(0, run.out.find('\n')), "# ORDER TIME x");
  const std::string stages =
      "#(INFO) Parsing input\n#(INFO) Initializing values\n#(INFO) Starting solving\n\n";
  EXPECT_EQ(run.err.substr(0, stages.size()), stages);
  EXPECT_NE(run.err.find("#(INFO) utime="), std::string::npos);
}

TEST_F(Driver, WithoutAFileStandardInputIsRead)
{
  const ChildOutcome run = Run({}, "abc' = 1;");
  EXPECT_EQ(run.exitStatus, 0);
  EXPECT_EQ(run.out.substr(0, run.out.find('\n')), "# ORDER TIME abc");
}

TEST_F(Driver, TheCommandLineComesBehindTheSettingsFile)
{
  home.Write(".varnorc", "PRINTORD = 0\nTMAX = 3\n");
  const ChildOutcome run = Run({"-L", "1", "-t", "2", home.Write("in", "x' = 1;")});
  EXPECT_EQ(run.exitStatus, 0);
  EXPECT_EQ(run.out.substr(0, run.out.find('\n')), "#  TIME x");
  EXPECT_NE(run.out.find(" 2.00000000000e+00 "), std::string::npos) << run.out;
}

TEST_F(Driver, ASyntaxErrorEndsTheRunWithStatus3)
{
  const ChildOutcome run = Run({home.Write("in", "x' = ;")});
  EXPECT_EQ(run.exitStatus, 3);
  EXPECT_EQ(run.out, "");
}

TEST_F(Driver, WarnsOfUnusedArgumentsOnceTheFileIsOpen)
{
  const std::string warning = "#(WARN) Some unused parameters in the way...\n";
  const std::string file = home.Write("in", "x' = 1;");
  EXPECT_EQ(Run({file, "b"}).err.substr(0, warning.size()), warning);
  EXPECT_EQ(Run({home.Folder() / "missing", "b"}).err,
            "#(WARN) Error by opening input file: No such file or directory\n");
}

}  // namespace
}  // namespace varno
