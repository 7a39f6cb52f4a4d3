#include "varno/config/command_line.h"

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <iostream>
#include <sstream>
#include <string>
#include <unistd.h>
#include <vector>

#include <gtest/gtest.h>

#include "tests/support/exact_text.h"
#include "tests/support/temp_home.h"
#include "tests/varno/support/log_capture.h"
#include "tests/varno/support/parsed_input.h"
#include "tests/varno/support/scoped_global.h"
#include "varno/config/usage_text.h"
#include "varno/core/global_data.h"
#include "varno/parser/parse.h"

namespace varno {

using namespace support;

namespace {

using Arguments = std::vector<std::string>;

/// Reads a command line "varno ARGUMENTS" from its beginning.
int Read(Arguments arguments)
{
  arguments.insert(arguments.begin(), "varno");
  std::vector<char*> argv;
  for (std::string& argument : arguments) argv.push_back(argument.data());
  argv.push_back(nullptr);
  // 0 makes getopt forget where it was.
  optind = 0;
  return ReadCommandLine(static_cast<int>(arguments.size()), argv.data());
}

/// Reads the command line and then the input that it chose, reports the result on standard error
/// and ends the process.
[[noreturn]] void ReadAndParse(const Arguments& arguments)
{
  Read(arguments);
  std::cerr << (ParseInput() ? "accepted" : "rejected");
  for (const auto& [name, variable] : Expr::Global->_EQUATIONS) std::cerr << ' ' << name;
  std::exit(0);
}

std::string CurrentUsageText()
{
  std::ostringstream out;
  WriteUsage(out);
  return out.str();
}

class CommandLine : public testing::Test {
 protected:
  const ScopedGlobal global;
};

const testing::ExitedWithCode kFails(1);
const testing::ExitedWithCode kSucceeds(0);

TEST_F(CommandLine, NoArgumentsLeaveTheDefaults)
{
  EXPECT_EQ(Read({}), 0);
  EXPECT_EQ(global->_NTERMS, 34);
  EXPECT_EQ(mpf_cmp_d(global->_STEP, 0.1), 0);
  EXPECT_EQ(mpf_cmp_ui(global->_TMAX, 1), 0);
  EXPECT_EQ(global->_PRINTEVERY.Sign(), 0);
}

TEST_F(CommandLine, OptionsAreAppliedFromLeftToRight)
{
  EXPECT_EQ(Read({"-t", "2", "-w", "20", "-t", "5", "-O0", "-dx"}), 0);
  EXPECT_EQ(mpf_cmp_ui(global->_TMAX, 5), 0);
  EXPECT_EQ(global->_PRINTWIDTH, 20);
  EXPECT_FALSE(global->_PRINTORDER);
  EXPECT_FALSE(global->_DUMPTREE);
}

TEST_F(CommandLine, ADashBeginsTheArgumentOfAnOptionToo)
{
  EXPECT_EQ(Read({"-t", "-5", "-G", "-v"}), 0);
  EXPECT_EQ(mpf_cmp_si(global->_TMAX, -5), 0);
  EXPECT_EQ(global->_GNUPLOTFILE, "-v");
}

TEST_F(CommandLine, MaximumOrderAndZeroTermsDependOnTheirOrder)
{
  Read({"-z", "5", "-o", "20"});
  EXPECT_EQ(global->_NTERMS, 25);
  const ScopedGlobal fresh;
  Read({"-o", "20", "-z", "5"});
  EXPECT_EQ(fresh->_NTERMS, 29);
}

TEST_F(CommandLine, ANegativePrintIntervalDividesTheTimeIntoParts)
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

TEST_F(CommandLine, ANegativePrintIntervalOfTheSettingsFileIsDividedByTheFinalTmax)
{
  mpf_set_d(global->_PRINTEVERY, -10);
  Read({"-t", "5"});
  EXPECT_EQ(mpf_cmp_d(global->_PRINTEVERY, 0.5), 0);
}

TEST_F(CommandLine, VersionGoesToStandardOutput)
{
  const auto readWithOutputAsError = [] {
    dup2(STDERR_FILENO, STDOUT_FILENO);
    Read({"-v"});
  };
  EXPECT_EXIT(readWithOutputAsError(), kSucceeds, ExactText("VARNO/C version 1.0\n"));
}

TEST_F(CommandLine, AVersionThatCannotBeWrittenIsAnError)
{
  const auto readWithoutOutput = [] {
    std::cout.rdbuf(nullptr);
    Read({"-v"});
  };
  EXPECT_EXIT(readWithoutOutput(), kFails,
              ExactText("#(ERR) Cannot write the results to standard output\n"));
}

TEST_F(CommandLine, HelpWritesTheUsageTextAndFails)
{
  EXPECT_EXIT(Read({"-h"}), kFails, ExactText(CurrentUsageText()));
}

TEST_F(CommandLine, HelpShowsTheOptionsReadBeforeIt)
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

TEST_F(CommandLine, AnUnknownOptionIsDiagnosedAndWritesTheUsageText)
{
  // getopt knows no long options here: "--x" is an option '-'.
  for (const std::string option : {"b", "Z", "?", ":", "-"}) {
    EXPECT_EXIT(Read({'-' + option + 'x'}), kFails,
                ExactText("varno: invalid option -- '" + option + "'\n" + CurrentUsageText()));
  }
}

TEST_F(CommandLine, AMissingArgumentIsDiagnosedAndWritesTheUsageText)
{
  for (const std::string option : {"t", "3", "W", "g"}) {
    EXPECT_EXIT(
        Read({'-' + option}), kFails,
        ExactText("varno: option requires an argument -- '" + option + "'\n" + CurrentUsageText()));
  }
}

TEST_F(CommandLine, TheArgumentIsTheInputFile)
{
  const TempHome folder;
  const std::string file = folder.Write("in.varno", "y' = 1;");
  EXPECT_EXIT(ReadAndParse({file}), kSucceeds, ExactText("accepted y"));
  EXPECT_EXIT(ReadAndParse({"-t", "2", file}), kSucceeds, ExactText("accepted y"));
  EXPECT_EXIT(ReadAndParse({file, "-t", "2"}), kSucceeds, ExactText("accepted y"));
  EXPECT_EXIT(ReadAndParse({"--", file}), kSucceeds, ExactText("accepted y"));
}

TEST_F(CommandLine, AnEmptyFileCanBeOpened)
{
  const TempHome folder;
  const std::string file = folder.Write("empty", "");
  EXPECT_EXIT(ReadAndParse({file}), kSucceeds,
              ExactText("#(ERR) ERROR: parse error \"\" at line #1\nrejected"));
}

TEST_F(CommandLine, WithoutAFileOrWithADashStandardInputIsRead)
{
  const TempHome folder;
  const std::string file = folder.Write("in", "x = 1;");
  const auto readStandardInput = [&file](const Arguments& arguments) {
    if (std::freopen(file.c_str(), "r", stdin) == nullptr) std::exit(2);
    ReadAndParse(arguments);
  };
  EXPECT_EXIT(readStandardInput({}), kSucceeds, ExactText("accepted x"));
  EXPECT_EXIT(readStandardInput({"-"}), kSucceeds, ExactText("accepted x"));
  EXPECT_EXIT(readStandardInput({"-t", "2", "-"}), kSucceeds, ExactText("accepted x"));
}

TEST_F(CommandLine, AFileThatCannotBeOpenedEndsTheRun)
{
  const TempHome folder;
  const std::string missing = folder.Folder() / "missing";
  EXPECT_EXIT(Read({missing}), kFails,
              ExactText("#(WARN) Error by opening input file: No such file or directory\n"));
  EXPECT_EXIT(Read({""}), kFails,
              ExactText("#(WARN) Error by opening input file: No such file or directory\n"));
}

TEST_F(CommandLine, AFolderIsReportedLikeAFileThatCannotBeOpened)
{
  const TempHome folder;
  EXPECT_EXIT(Read({folder.Folder()}), kFails,
              ExactText("#(WARN) Error by opening input file: Is a directory\n"));
}

TEST_F(CommandLine, FurtherArgumentsAreIgnoredWithAWarning)
{
  const std::string warning = "#(WARN) Some unused parameters in the way...\n";
  const TempHome folder;
  const std::string file = folder.Write("in", "x = 1;");
  EXPECT_EXIT(ReadAndParse({file, "b"}), kSucceeds, ExactText(warning + "accepted x"));
  EXPECT_EXIT(ReadAndParse({file, "b", "c"}), kSucceeds, ExactText(warning + "accepted x"));
  const LogCapture log;
  EXPECT_EQ(Read({"-", "b"}), 0);
  EXPECT_EQ(log.Text(), warning);
}

}  // namespace

}  // namespace varno
