#include "varno/config/settings_file.h"

#include <cstdlib>
#include <filesystem>
#include <iterator>
#include <sstream>
#include <string>
#include <string_view>

#include <gmp.h>
#include <gtest/gtest.h>

#include "tests/support/temp_home.h"
#include "tests/varno/support/log_capture.h"
#include "tests/varno/support/scoped_global.h"
#include "varno/core/global_data.h"

namespace varno {

using namespace support;

namespace {

using namespace std::literals;

template <class Field>
std::string TextOf(const Field& field)
{
  std::ostringstream out;
  out << field;
  return out.str();
}

template <>
std::string TextOf(const Mpf& field)
{
  return TextOf(mpf_get_d(field));
}

template <auto kField>
std::string FieldText()
{
  return TextOf(Expr::Global->*kField);
}

std::string DefaultPrecision()
{
  return TextOf(mpf_get_default_prec());
}

struct KeywordRow {
  const char* keyword;
  const char* value;
  /// Reads the setting, and what it is afterwards.
  std::string (*setting)();
  const char* expected;
  const char* report;
};

// Every value differs from the default.
const KeywordRow kKeywords[] = {
    {"TMAX", "10", FieldText<&GlobalData::_TMAX>, "10", "MaxTime = "},
    {"MAXORDER", "20", FieldText<&GlobalData::_NTERMS>, "24", "MaxOrder = "},
    {"PRINTORD", "0", FieldText<&GlobalData::_PRINTORDER>, "0", "Print order = "},
    {"ALL3DVALUES", "1", FieldText<&GlobalData::_ALL3DVALUES>, "1", "Print all values (3D) = "},
    {"ACCURACY", "1e-20", FieldText<&GlobalData::_ACCURACY>, "1e-20", "Accuracy = "},
    {"DUMPTREE", "1", FieldText<&GlobalData::_DUMPTREE>, "1", "Dump tree = "},
    {"DUMPDY", "3", FieldText<&GlobalData::_DUMPDY>, "3", "Dump DY values = "},
    {"FIXEDSTEP", "1", FieldText<&GlobalData::_FIXEDSTEP>, "1", "Fixed int.step = "},
    {"GNUPLOT_FILENAME", "myplot", FieldText<&GlobalData::_GNUPLOTFILE>, "myplot",
     "GnuPlot File = "},
    {"GNUPLOT_OUTPUT", "png", FieldText<&GlobalData::_GNUPLOTOUTPUT>, "png", "GnuPlot Output = "},
    {"SIMPLIFYSMALLNUMBERS", "0", FieldText<&GlobalData::_SIMPLIFYSMALL>, "0",
     "Ignore small numbers = "},
    {"PRINTONLYTMAX", "1", FieldText<&GlobalData::_PRINTONLYTMAX>, "1", "Print only Tmax = "},
    {"PRINTNUMCHARS", "5", FieldText<&GlobalData::_PRINTCHARS>, "5",
     "Characters of number to print = "},
    {"INITIALINTSTEP", "25e-2", FieldText<&GlobalData::_STEP>, "0.25", "Initial step size = "},
    {"STOPSTEADYSTATE", "3", FieldText<&GlobalData::_STEADYSTOP>, "3",
     "Step when steady solution is found = "},
    {"PRINTNUMWIDTH", "20", FieldText<&GlobalData::_PRINTWIDTH>, "20", "Number digits to print = "},
    {"GMPWORDSIZE", "256", DefaultPrecision, "256", "GMP word size = "},
    {"ZEROTAYLORTERMS", "6", FieldText<&GlobalData::_NTERMS>, "40",
     "Number of Taylor terms equal to zero = "},
    {"PRINTTEMPQ", "1", FieldText<&GlobalData::_PRINTTEMPEQ>, "1", "Print temporary equations = "},
    {"PRINTEVERYRESULT", "-4", FieldText<&GlobalData::_PRINTEVERY>, "-4", "Print every result = "},
    {"STIFFSYSTEMDETECTEXPDIFF", "30", FieldText<&GlobalData::_STIFFEXPDIFF>, "30",
     "Stiff system detect exponent difference = "},
    {"USEALLTERMS", "1", FieldText<&GlobalData::_USEALLTERMS>, "1", "Use all terms = "},
    {"STIFFDETECTEVERYSTEP", "1", FieldText<&GlobalData::_STIFFEVERYSTEP>, "1",
     "Stiff system detected every step  = "},
};

std::string Report(const KeywordRow& row)
{
  return "#(RES_SET) "s + row.report + row.value + '\n';
}

std::string InvalidKeyword(int line, const std::string& keyword)
{
  return "(WARN) Invalid keyword in rc file, line " + std::to_string(line) + ": '" + keyword +
         "'\n";
}

std::string NoValue(const std::string& keyword)
{
  return "(WARN) No value set for option '" + keyword + "' in rc file.\n";
}

/// What reading the settings file writes.
std::string ReadLog()
{
  const LogCapture log;
  ReadSettingsFile();
  return log.Text();
}

class SettingsFile : public testing::Test {
 protected:
  /// What reading a settings file of this text writes.
  std::string Read(std::string_view text) const
  {
    home.Write(".varnorc", text);
    return ReadLog();
  }

  const ScopedGlobal global;
  const TempHome home;
};

TEST_F(SettingsFile, EveryKeywordSetsItsFieldAndReportsIt)
{
  for (const KeywordRow& row : kKeywords) {
    const ScopedGlobal fresh;
    ASSERT_NE(row.setting(), row.expected) << row.keyword;
    EXPECT_EQ(Read(row.keyword + " = "s + row.value + '\n'), Report(row));
    EXPECT_EQ(row.setting(), row.expected) << row.keyword;
  }
}

TEST_F(SettingsFile, KeywordsAreNumberedInTheirOrder)
{
  int index = 0;
  for (const KeywordRow& row : kKeywords) {
    std::string value;
    EXPECT_EQ(ParseSettingLine(row.keyword + "="s + row.value, value, 1), index++) << row.keyword;
    EXPECT_EQ(value, row.value) << row.keyword;
  }
  EXPECT_EQ(index, 23);
}

TEST_F(SettingsFile, IndexesOutsideTheKeywordsDoNothing)
{
  const LogCapture log;
  for (const int index : {23, 24, 1000, -1}) ApplySetting(index, "5");
  EXPECT_EQ(log.Text(), "");
}

TEST_F(SettingsFile, LinesAreAppliedFromTopToBottom)
{
  EXPECT_EQ(Read("TMAX = 2\nZEROTAYLORTERMS = 6\nMAXORDER = 20\nTMAX = 3\n"),
            "#(RES_SET) MaxTime = 2\n"
            "#(RES_SET) Number of Taylor terms equal to zero = 6\n"
            "#(RES_SET) MaxOrder = 20\n"
            "#(RES_SET) MaxTime = 3\n");
  EXPECT_EQ(mpf_cmp_ui(global->_TMAX, 3), 0);
  EXPECT_EQ(global->_NTERMS, 26);
}

TEST_F(SettingsFile, ATerminalTurnsGnuplotOn)
{
  Read("GNUPLOT_FILENAME = plot");
  EXPECT_FALSE(global->_GNUPLOT);
  Read("GNUPLOT_OUTPUT = png");
  EXPECT_TRUE(global->_GNUPLOT);
}

TEST_F(SettingsFile, TheZeroTermsAreSetWithTheTermCount)
{
  Read("ZEROTAYLORTERMS = 6");
  EXPECT_EQ(global->_ZEROTERMS, 6);
}

TEST_F(SettingsFile, TheStepRefillsTheStepFactors)
{
  Read("INITIALINTSTEP = 25e-2");
  EXPECT_EQ(mpf_cmp_d(global->_STEPDIV[2], 0.125), 0);
}

TEST_F(SettingsFile, AFlagIsOnForTheNumberOneOnly)
{
  for (const char* const value : {"0", "2", "-1", "on", "11"}) {
    global->_FIXEDSTEP = true;
    EXPECT_EQ(Read("FIXEDSTEP = "s + value), "#(RES_SET) Fixed int.step = "s + value + '\n');
    EXPECT_FALSE(global->_FIXEDSTEP) << value;
  }
}

TEST_F(SettingsFile, AKeywordMayBeWrittenInAnyCaseAndWithBlanks)
{
  for (const char* const line : {"tmax = 5", "TMax=5", "  TMAX:5", "\tTMAX\t:\t5\t", "T MAX = 5",
                                 "T\v\fmax =  5  ", "TMAX =\r5"}) {
    mpf_set_ui(global->_TMAX, 1);
    EXPECT_EQ(Read(line), "#(RES_SET) MaxTime = 5\n") << line;
    EXPECT_EQ(mpf_cmp_ui(global->_TMAX, 5), 0) << line;
  }
}

TEST_F(SettingsFile, CommentsEndALine)
{
  for (const char* const line :
       {"tmax = 10  # final time", "tmax = 10%", "tmax = 10;20", "tmax = 10 ;#%"}) {
    mpf_set_ui(global->_TMAX, 1);
    EXPECT_EQ(Read(line), "#(RES_SET) MaxTime = 10\n") << line;
    EXPECT_EQ(mpf_cmp_ui(global->_TMAX, 10), 0) << line;
  }
  // The comment begins at the first of the three characters.
  EXPECT_EQ(Read("TMAX = ; 5"), NoValue("TMAX"));
  EXPECT_EQ(Read("TM#AX = 5"), InvalidKeyword(1, "TM") + NoValue("TM"));
}

TEST_F(SettingsFile, BlankAndCommentLinesAreSkippedAndCounted)
{
  EXPECT_EQ(Read("# comment\n\n   \t \n; comment\n  % comment\nFOO = 1\n"),
            InvalidKeyword(6, "FOO"));
}

TEST_F(SettingsFile, AnUnknownKeywordIsReportedWithItsLineInUpperCase)
{
  EXPECT_EQ(Read("TMAX = 2\n\nFOO = 1\n"), "#(RES_SET) MaxTime = 2\n" + InvalidKeyword(3, "FOO"));
  EXPECT_EQ(Read("foo bar = 1"), InvalidKeyword(1, "FOOBAR"));
  EXPECT_EQ(Read("T-MAX = 1"), InvalidKeyword(1, "T-MAX"));
  EXPECT_EQ(Read("TMAXX = 1"), InvalidKeyword(1, "TMAXX"));
  EXPECT_EQ(Read("TMA = 1"), InvalidKeyword(1, "TMA"));
  EXPECT_EQ(Read("= 1"), InvalidKeyword(1, ""));
}

TEST_F(SettingsFile, AKnownKeywordWithoutAValueIsReportedAndSetsNothing)
{
  for (const char* const line :
       {"TMAX", "TMAX =", "TMAX:", "TMAX :=", "TMAX := 5", "TMAX == 5", "TMAX =: 5", "TMAX = .5",
        "TMAX = /", "TMAX = \"5\"", "TMAX = _5"}) {
    EXPECT_EQ(Read(line), NoValue("TMAX")) << line;
  }
  EXPECT_EQ(mpf_cmp_ui(global->_TMAX, 1), 0);
}

TEST_F(SettingsFile, AnUnknownKeywordWithoutAValueIsReportedTwice)
{
  EXPECT_EQ(Read("\nfoo\n"), InvalidKeyword(2, "FOO") + NoValue("FOO"));
  EXPECT_EQ(Read("TMAX 5"), InvalidKeyword(1, "TMAX5") + NoValue("TMAX5"));
  EXPECT_EQ(Read(":"), InvalidKeyword(1, "") + NoValue(""));
}

TEST_F(SettingsFile, AValueHoldsLettersDigitsAndSigns)
{
  const struct {
    const char* text;
    const char* value;
  } rows[] = {
      {"0.01", "0"},        {"my_plot", "my"}, {"a/b", "a"},   {"a b", "a"},
      {"-1e+5E", "-1e+5E"}, {"5=6", "5"},      {"5:6", "5"},   {"a,b", "a"},
      {"xyz09", "xyz09"},   {"--", "--"},      {"a\xe4", "a"}, {"a\r", "a"},
  };
  for (const auto& [text, expected] : rows) {
    std::string value = "old";
    EXPECT_EQ(ParseSettingLine("GNUPLOT_FILENAME = "s + text, value, 1), 8) << text;
    EXPECT_EQ(value, expected) << text;
  }
}

TEST_F(SettingsFile, ADecimalPointEndsTheStep)
{
  EXPECT_EQ(Read("INITIALINTSTEP = 0.001"), "#(RES_SET) Initial step size = 0\n");
  EXPECT_EQ(global->_STEP.Sign(), 0);
}

TEST_F(SettingsFile, TextThatIsNoNumberGivesZeroOrKeepsADecimal)
{
  EXPECT_EQ(Read("PRINTNUMWIDTH = abc\nACCURACY = abc\nTMAX = abc\nPRINTEVERYRESULT = 1x\n"),
            "#(RES_SET) Number digits to print = abc\n"
            "#(RES_SET) Accuracy = abc\n"
            "#(RES_SET) MaxTime = abc\n"
            "#(RES_SET) Print every result = 1x\n");
  EXPECT_EQ(global->_PRINTWIDTH, 0);
  EXPECT_EQ(global->_ACCURACY.Sign(), 0);
  EXPECT_EQ(mpf_cmp_ui(global->_TMAX, 1), 0);
  EXPECT_EQ(global->_PRINTEVERY.Sign(), 0);
}

TEST_F(SettingsFile, CarriageReturnsEndValuesButMakeEmptyLinesKeywords)
{
  EXPECT_EQ(Read("TMAX = 5\r\nGNUPLOT_OUTPUT = png\r\n"),
            "#(RES_SET) MaxTime = 5\n#(RES_SET) GnuPlot Output = png\n");
  EXPECT_EQ(global->_GNUPLOTOUTPUT, "png");
  EXPECT_EQ(Read("# comment\r\n\r\n"), InvalidKeyword(2, "") + NoValue(""));
}

TEST_F(SettingsFile, TheLastLineNeedsNoLineEnd)
{
  EXPECT_EQ(Read("TMAX = 2\nTMAX = 3"), "#(RES_SET) MaxTime = 2\n#(RES_SET) MaxTime = 3\n");
}

TEST_F(SettingsFile, ParsingALineReportsTheLineNumberItIsGiven)
{
  const LogCapture log;
  std::string value;
  EXPECT_EQ(ParseSettingLine("FOO = 1", value, 17), 23);
  EXPECT_EQ(value, "1");
  EXPECT_EQ(ParseSettingLine("TMAX = ", value, 18), 24);
  EXPECT_EQ(value, "");
  EXPECT_EQ(ParseSettingLine("FOO", value, 19), 24);
  EXPECT_EQ(log.Text(), InvalidKeyword(17, "FOO") + NoValue("TMAX") + InvalidKeyword(19, "FOO") +
                            NoValue("FOO"));
}

TEST_F(SettingsFile, AMissingOrUnreadableFileIsNoError)
{
  EXPECT_EQ(ReadLog(), "");
  std::filesystem::create_directory(home.Folder() / ".varnorc");
  EXPECT_EQ(ReadLog(), "");
  setenv("HOME", (home.Folder() / "missing").c_str(), 1);
  EXPECT_EQ(ReadLog(), "");
}

TEST_F(SettingsFile, WithoutHomeTheCurrentFolderIsSearched)
{
  home.Write(".varnorc", "TMAX = 7");
  const std::filesystem::path before = std::filesystem::current_path();
  std::filesystem::current_path(home.Folder());
  unsetenv("HOME");
  const std::string log = ReadLog();
  std::filesystem::current_path(before);
  EXPECT_EQ(log, "#(RES_SET) MaxTime = 7\n");
}

}  // namespace

}  // namespace varno
