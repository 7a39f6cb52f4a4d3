#include "solve/command/command_line.h"

#include <string>
#include <variant>
#include <vector>

#include <gtest/gtest.h>

#include "solve/command/usage_error.h"

namespace varno::solve {

namespace {

using Strings = std::vector<std::string>;

CommandLine Parse(Strings arguments)
{
  return std::get<CommandLine>(ParseCommandLine(arguments));
}

/// What a command line that only has this option beside its file is understood as.
Options OptionsOf(Strings arguments)
{
  arguments.insert(arguments.begin(), "file");
  return Parse(arguments).options;
}

std::string ErrorOf(const Strings& arguments)
{
  try {
    ParseCommandLine(arguments);
  } catch (const UsageError& error) {
    return error.what();
  }
  return "no error";
}

}  // namespace

TEST(CommandLine, DefaultsAreThoseOfTheLibrary)
{
  const CommandLine commandLine = Parse({"file.varno"});
  EXPECT_EQ(commandLine.file, "file.varno");
  EXPECT_TRUE(commandLine.settings.empty());
  EXPECT_EQ(commandLine.format, Format::kTable);
  EXPECT_FALSE(commandLine.output);
  EXPECT_FALSE(commandLine.explain || commandLine.hold || commandLine.progress ||
               commandLine.quiet);

  const Options& options = commandLine.options;
  const Options defaults;
  EXPECT_FALSE(options.from);
  EXPECT_EQ(options.to, defaults.to);
  EXPECT_EQ(std::get<RowsPoints>(options.rows).count, 100);
  EXPECT_EQ(options.digits, defaults.digits);
  EXPECT_EQ(options.tiny, defaults.tiny);
  EXPECT_TRUE(options.columns.empty());
  EXPECT_TRUE(options.check);
  EXPECT_FALSE(options.maxSteps);
  EXPECT_FALSE(options.maxSeconds);
  EXPECT_EQ(options.maxBits, defaults.maxBits);
}

TEST(CommandLine, Interval)
{
  const Options options = OptionsOf({"--from", "-10*pi", "--to=1/3"});
  EXPECT_EQ(options.from, "-10*pi");
  EXPECT_EQ(options.to, "1/3");
}

TEST(CommandLine, ChoiceOfRows)
{
  EXPECT_EQ(std::get<RowsEvery>(OptionsOf({"--every", "0.1"}).rows).interval, "0.1");
  EXPECT_EQ(std::get<RowsPoints>(OptionsOf({"--points", "7"}).rows).count, 7);
  EXPECT_EQ(std::get<RowsAt>(OptionsOf({"--at", "0,atan2(1, 2) ,pi"}).rows).times,
            (Strings{"0", "atan2(1, 2)", "pi"}));
  EXPECT_TRUE(std::holds_alternative<RowsAtSteps>(OptionsOf({"--steps"}).rows));
  EXPECT_TRUE(std::holds_alternative<RowAtEnd>(OptionsOf({"--last"}).rows));
}

TEST(CommandLine, EveryTwoChoicesOfRowsExcludeEachOther)
{
  const std::vector<Strings> choices = {
      {"--every", "1"}, {"--points", "2"}, {"--at", "0"}, {"--steps"}, {"--last"}};
  for (std::size_t i = 0; i < choices.size(); ++i) {
    for (std::size_t j = 0; j < choices.size(); ++j) {
      if (i == j) continue;
      Strings arguments = {"file"};
      arguments.insert(arguments.end(), choices[i].begin(), choices[i].end());
      arguments.insert(arguments.end(), choices[j].begin(), choices[j].end());
      const std::size_t first = std::min(i, j), second = std::max(i, j);
      EXPECT_EQ(ErrorOf(arguments), choices[first][0] + " and " + choices[second][0] +
                                        " exclude each other: both say at which times there are"
                                        " rows");
    }
  }
}

TEST(CommandLine, Numbers)
{
  const Options options = OptionsOf({"--digits", "10000", "--tiny", "1e-50", "--no-check"});
  EXPECT_EQ(options.digits, 10'000);
  EXPECT_EQ(options.tiny, "1e-50");
  EXPECT_FALSE(options.check);
}

TEST(CommandLine, Limits)
{
  const Options options = OptionsOf(
      {"--max-steps", "9223372036854775807", "--max-seconds", "1.5e-3", "--max-bits", "64"});
  EXPECT_EQ(options.maxSteps, 9'223'372'036'854'775'807);
  EXPECT_EQ(options.maxSeconds, 0.0015);
  EXPECT_EQ(options.maxBits, 64);
}

TEST(CommandLine, SettingsAreKeptInTheirOrder)
{
  const CommandLine commandLine =
      Parse({"--set", "mu=7", "file", "--set=x(0)=2", "--set", "y=[1]", "--set", "a=-1"});
  EXPECT_EQ(commandLine.settings, (Strings{"mu=7", "x(0)=2", "y=[1]", "a=-1"}));
  EXPECT_EQ(commandLine.file, "file");
}

TEST(CommandLine, SettingsTakeNothingButTheirValue)
{
  const CommandLine commandLine = Parse({"--set", "[a=1,2]", "--", "--digits"});
  EXPECT_EQ(commandLine.settings, Strings{"[a=1,2]"});
  EXPECT_EQ(commandLine.file, "--digits");
}

TEST(CommandLine, Output)
{
  const CommandLine commandLine = Parse({"file", "--format", "json", "--output", "-x", "--columns",
                                         " x, y'", "--hold", "--explain", "--progress", "--quiet"});
  EXPECT_EQ(commandLine.format, Format::kJson);
  EXPECT_EQ(commandLine.output, "-x");
  EXPECT_EQ(commandLine.options.columns, (Strings{"x", "y'"}));
  EXPECT_TRUE(commandLine.hold && commandLine.explain && commandLine.progress && commandLine.quiet);
  EXPECT_EQ(Parse({"file", "--format=csv"}).format, Format::kCsv);
  EXPECT_EQ(Parse({"file", "--format=table"}).format, Format::kTable);
}

TEST(CommandLine, LastOfRepeatedOptionsWins)
{
  const CommandLine commandLine =
      Parse({"file", "--to", "1", "--to=2", "--digits", "bad", "--last", "--digits", "3", "--last",
             "--format", "xml", "--format", "csv"});
  EXPECT_EQ(commandLine.options.to, "2");
  EXPECT_EQ(commandLine.options.digits, 3);
  EXPECT_EQ(commandLine.format, Format::kCsv);
  EXPECT_TRUE(std::holds_alternative<RowAtEnd>(commandLine.options.rows));
}

TEST(CommandLine, UniqueAbbreviations)
{
  const Options options = OptionsOf({"--d", "5", "--fr=1", "--no", "--max-se", "2"});
  EXPECT_EQ(options.digits, 5);
  EXPECT_EQ(options.from, "1");
  EXPECT_FALSE(options.check);
  EXPECT_EQ(options.maxSeconds, 2);
}

TEST(CommandLine, ExactNameIsNoAbbreviationOfALongerOne)
{
  // --sweep-file begins with --sweep.
  const CommandLine commandLine = Parse({"file", "--sweep", "a=1,2", "--sweep-", "x"});
  EXPECT_EQ(commandLine.sweeps, Strings{"a=1,2"});
  EXPECT_EQ(commandLine.sweepFiles, Strings{"x"});
}

TEST(CommandLine, AmbiguousAbbreviation)
{
  EXPECT_EQ(ErrorOf({"file", "--h"}), "option '--h' is ambiguous; it may be --hold --help");
}

TEST(CommandLine, ValueIsWhateverComesNext)
{
  EXPECT_EQ(OptionsOf({"--to", "--from"}).to, "--from");
  EXPECT_EQ(OptionsOf({"--to", "--"}).to, "--");
  EXPECT_EQ(OptionsOf({"--to", ""}).to, "");
  EXPECT_EQ(OptionsOf({"--to="}).to, "");
  EXPECT_EQ(OptionsOf({"--to=a=b"}).to, "a=b");
}

TEST(CommandLine, NothingIsAnOptionAfterTwoHyphens)
{
  EXPECT_EQ(Parse({"--last", "--", "--digits"}).file, "--digits");
  EXPECT_EQ(Parse({"--", "-"}).file, "-");
  EXPECT_EQ(Parse({"--", "--"}).file, "--");
  EXPECT_EQ(ErrorOf({"a", "--", "--steps"}), "one FILE at a time, not 'a' and '--steps'");
}

TEST(CommandLine, NearNamesAreOffered)
{
  EXPECT_EQ(ErrorOf({"file", "--digit-s", "3"}),
            "unknown option '--digit-s'; did you mean --digits?");
  EXPECT_EQ(ErrorOf({"file", "--form-at=csv"}),
            "unknown option '--form-at'; did you mean --format?");
  EXPECT_EQ(ErrorOf({"file", "--stesp"}), "unknown option '--stesp'; did you mean --steps?");
  EXPECT_EQ(ErrorOf({"file", "--tolerance", "1e-9"}), "unknown option '--tolerance'");
}

TEST(CommandLine, UnderscoresAreNoHyphens)
{
  EXPECT_EQ(ErrorOf({"file", "--max_steps", "3"}),
            "unknown option '--max_steps'; did you mean --max-steps?");
}

TEST(CommandLine, HelpAndVersionNeedNoFile)
{
  EXPECT_EQ(std::get<Information>(ParseCommandLine({"--version"})).text, "varno-solve 1.0\n");
  const auto help = std::get<Information>(ParseCommandLine({"--help"})).text;
  EXPECT_TRUE(help.starts_with("Usage: varno-solve [OPTIONS] FILE\n"));
  EXPECT_TRUE(help.ends_with("\n"));
  EXPECT_FALSE(help.ends_with("\n\n"));
}

}  // namespace varno::solve
