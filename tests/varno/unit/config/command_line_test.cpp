#include "varno/config/command_line.h"

#include <cstdio>
#include <cstdlib>
#include <iostream>
#include <sstream>
#include <string>
#include <unistd.h>
#include <vector>

#include <gtest/gtest.h>

#include "tests/support/exact_text.h"
#include "tests/varno/support/scoped_global.h"
#include "varno/config/usage_text.h"
#include "varno/core/global_data.h"
#include "version.h"

namespace varno {

using namespace support;

namespace {

using Arguments = std::vector<std::string>;

/// Reads a command line "varno ARGUMENTS" from its beginning.
/// The result points into the arguments of the last call.
CommandLine Read(const Arguments& given)
{
  static Arguments arguments;
  arguments = given;
  arguments.insert(arguments.begin(), "varno");
  std::vector<char*> argv;
  for (std::string& argument : arguments) argv.push_back(argument.data());
  argv.push_back(nullptr);
  // 0 makes getopt forget where it was.
  optind = 0;
  return ReadCommandLine(static_cast<int>(arguments.size()), argv.data());
}

std::string CurrentUsageText()
{
  std::ostringstream out;
  WriteUsage(out);
  return out.str();
}

class CommandLineTest : public testing::Test {
 protected:
  const ScopedGlobal global;
};

const testing::ExitedWithCode kFails(1);
const testing::ExitedWithCode kSucceeds(0);

TEST_F(CommandLineTest, NoArgumentsLeaveTheDefaults)
{
  Read({});
  EXPECT_EQ(global->_NTERMS, 34);
  EXPECT_EQ(mpf_cmp_d(global->_STEP, 0.1), 0);
  EXPECT_EQ(mpf_cmp_ui(global->_TMAX, 1), 0);
  EXPECT_EQ(global->_PRINTEVERY.Sign(), 0);
}

TEST_F(CommandLineTest, OptionsAreAppliedFromLeftToRight)
{
  Read({"-t", "2", "-w", "20", "-t", "5", "-O0", "-dx"});
  EXPECT_EQ(mpf_cmp_ui(global->_TMAX, 5), 0);
  EXPECT_EQ(global->_PRINTWIDTH, 20);
  EXPECT_FALSE(global->_PRINTORDER);
  EXPECT_FALSE(global->_DUMPTREE);
}

TEST_F(CommandLineTest, ADashBeginsTheArgumentOfAnOptionToo)
{
  Read({"-t", "-5", "-G", "-v"});
  EXPECT_EQ(mpf_cmp_si(global->_TMAX, -5), 0);
  EXPECT_EQ(global->_GNUPLOTFILE, "-v");
}

TEST_F(CommandLineTest, MaximumOrderAndZeroTermsDependOnTheirOrder)
{
  Read({"-z", "5", "-o", "20"});
  EXPECT_EQ(global->_NTERMS, 25);
  const ScopedGlobal fresh;
  Read({"-o", "20", "-z", "5"});
  EXPECT_EQ(fresh->_NTERMS, 29);
}

TEST_F(CommandLineTest, ANegativePrintIntervalDividesTheTimeIntoParts)
{
  const struct {
    Arguments arguments;
    double interval;
  } rows[] = {
      {{"-F", "-4", "-t", "2"}, 0.5},
      {{"-t", "2", "-F", "-4"}, 0.5},
      {{"-F", "-4"}, 0.25},
      {{"-F", "-0.5", "-t", "3"}, 6},
      {{"-F", "-4", "-t", "0"}, 0},
      {{"-F", "-4", "-t", "-2"}, -0.5},
      {{"-F", "0.5", "-t", "2"}, 0.5},
      {{"-F", "0", "-t", "2"}, 0},
  };
  for (const auto& [arguments, interval] : rows) {
    const ScopedGlobal fresh;
    Read(arguments);
    EXPECT_EQ(mpf_cmp_d(fresh->_PRINTEVERY, interval), 0)
        << testing::PrintToString(arguments) << ' ' << mpf_get_d(fresh->_PRINTEVERY);
  }
}

TEST_F(CommandLineTest, ANegativePrintIntervalOfTheSettingsFileIsDividedByTheFinalTmax)
{
  mpf_set_d(global->_PRINTEVERY, -10);
  Read({"-t", "5"});
  EXPECT_EQ(mpf_cmp_d(global->_PRINTEVERY, 0.5), 0);
}

TEST_F(CommandLineTest, VersionGoesToStandardOutput)
{
  const auto readWithOutputAsError = [] {
    dup2(STDERR_FILENO, STDOUT_FILENO);
    Read({"-v"});
  };
  EXPECT_EXIT(readWithOutputAsError(), kSucceeds,
              ExactText(std::string("VARNO/C version ") + kVersion + '\n'));
}

TEST_F(CommandLineTest, AVersionThatCannotBeWrittenIsAnError)
{
  const auto readWithoutOutput = [] {
    std::cout.rdbuf(nullptr);
    Read({"-v"});
  };
  EXPECT_EXIT(readWithoutOutput(), kFails,
              ExactText("#(ERR) Cannot write the results to standard output\n"));
}

TEST_F(CommandLineTest, HelpWritesTheUsageTextAndFails)
{
  EXPECT_EXIT(Read({"-h"}), kFails, ExactText(CurrentUsageText()));
}

TEST_F(CommandLineTest, HelpShowsTheOptionsReadBeforeIt)
{
  const std::string builtIn = CurrentUsageText();
  EXPECT_EXIT(Read({"-h", "-t", "5"}), kFails, ExactText(builtIn));
  mpf_set_ui(global->_TMAX, 5);
  const std::string changed = CurrentUsageText();
  ASSERT_NE(changed.find("  -t       sets maximum time Tmax (default  0.5e1)\n"),
            std::string::npos);
  mpf_set_ui(global->_TMAX, 1);
  EXPECT_EXIT(Read({"-t", "5", "-h"}), kFails, ExactText(changed));
}

TEST_F(CommandLineTest, AnUnknownOptionIsDiagnosedAndWritesTheUsageText)
{
  // getopt knows no long options here: "--x" is an option '-'.
  for (const std::string option : {"b", "Z", "?", ":", "-"}) {
    EXPECT_EXIT(Read({'-' + option + 'x'}), kFails,
                ExactText("varno: invalid option -- '" + option + "'\n" + CurrentUsageText()));
  }
}

TEST_F(CommandLineTest, AMissingArgumentIsDiagnosedAndWritesTheUsageText)
{
  for (const std::string option : {"t", "3", "W", "g"}) {
    EXPECT_EXIT(
        Read({'-' + option}), kFails,
        ExactText("varno: option requires an argument -- '" + option + "'\n" + CurrentUsageText()));
  }
}

TEST_F(CommandLineTest, TheFirstArgumentThatIsNoOptionIsTheInputFile)
{
  for (const Arguments& arguments :
       {Arguments{"in"}, {"-t", "2", "in"}, {"in", "-t", "2"}, {"--", "in"}}) {
    const CommandLine rest = Read(arguments);
    EXPECT_STREQ(rest.inputFile, "in");
    EXPECT_FALSE(rest.hasUnusedArguments);
  }
  EXPECT_STREQ(Read({""}).inputFile, "");
}

TEST_F(CommandLineTest, WithoutAFileOrWithADashStandardInputIsMeant)
{
  for (const Arguments& arguments : {Arguments{}, {"-"}, {"-t", "2", "-"}}) {
    const CommandLine rest = Read(arguments);
    EXPECT_EQ(rest.inputFile, nullptr);
    EXPECT_FALSE(rest.hasUnusedArguments);
  }
}

TEST_F(CommandLineTest, FurtherArgumentsAreUnused)
{
  for (const Arguments& arguments : {Arguments{"a", "b"}, {"a", "b", "c"}, {"-", "b"}}) {
    EXPECT_TRUE(Read(arguments).hasUnusedArguments);
  }
}

}  // namespace
}  // namespace varno
