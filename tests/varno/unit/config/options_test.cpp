#include "varno/config/options.h"

#include <set>
#include <string>
#include <utility>
#include <vector>

#include <gmp.h>
#include <gtest/gtest.h>

#include "tests/varno/support/scoped_global.h"
#include "varno/core/global_data.h"

namespace varno {

namespace {

void Apply(char letter, const char* argument)
{
  const Option* const option = FindOption(letter);
  ASSERT_NE(option, nullptr) << letter;
  option->apply(argument);
}

class OptionsTest : public testing::Test {
 protected:
  const ScopedGlobal global;
};

TEST_F(OptionsTest, EveryLetterTakesAnArgumentButHelpAndVersion)
{
  const std::string letters = OptionString();
  std::multiset<std::string> found;
  for (std::size_t i = 0; i < letters.size(); ++i) {
    if (letters[i] == ':') continue;
    found.insert(letters.substr(i, i + 1 < letters.size() && letters[i + 1] == ':' ? 2 : 1));
  }
  EXPECT_EQ(found, (std::multiset<std::string>{
                       "3:", "A:", "a:", "d:", "D:", "f:", "F:", "g:", "G:", "i:",
                       "N:", "o:", "O:", "p:", "P:", "r:", "R:", "s:", "S:", "t:",
                       "T:", "U:", "w:", "W:", "x:", "X:", "z:", "L:", "h",  "v"}));
  // A string that began with ':' would keep getopt silent.
  EXPECT_NE(letters.front(), ':');
}

TEST_F(OptionsTest, OtherLettersAreNoOptions)
{
  for (const char letter : {'h', '?', ':', 'b', 'Z', '\0'}) {
    EXPECT_EQ(FindOption(letter), nullptr) << letter;
  }
}

TEST_F(OptionsTest, AFlagIsOnForTheNumberOneOnly)
{
  const struct {
    char letter;
    bool GlobalData::*field;
  } options[] = {
      {'A', &GlobalData::_ALL3DVALUES},    {'d', &GlobalData::_DUMPTREE},
      {'f', &GlobalData::_FIXEDSTEP},      {'i', &GlobalData::_SIMPLIFYSMALL},
      {'L', &GlobalData::_PRINTONLYTMAX},  {'O', &GlobalData::_PRINTORDER},
      {'T', &GlobalData::_PRINTTEMPEQ},    {'U', &GlobalData::_USEALLTERMS},
      {'X', &GlobalData::_STIFFEVERYSTEP},
  };
  const struct {
    const char* text;
    bool flag;
  } texts[] = {
      {"1", true},  {"0", false}, {"2", false},  {"-1", false},   {"01", true},  {" 1", true},
      {"1x", true}, {"", false},  {"on", false}, {"true", false}, {"11", false}, {"0.1", false},
  };
  for (const auto& [letter, field] : options) {
    for (const auto& [text, flag] : texts) {
      // From the opposite, so that the option has to do something.
      Expr::Global->*field = !flag;
      Apply(letter, text);
      EXPECT_EQ(Expr::Global->*field, flag) << letter << " '" << text << "'";
    }
  }
}

TEST_F(OptionsTest, AnIntegerIsWhatTheTextBeginsWith)
{
  const struct {
    char letter;
    int GlobalData::*field;
  } options[] = {
      {'3', &GlobalData::_3DPOINTS},     {'D', &GlobalData::_DUMPDY},
      {'p', &GlobalData::_PRINTCHARS},   {'R', &GlobalData::_PERIODBUF},
      {'S', &GlobalData::_STEADYSTOP},   {'w', &GlobalData::_PRINTWIDTH},
      {'x', &GlobalData::_STIFFEXPDIFF},
  };
  const struct {
    const char* text;
    int number;
  } texts[] = {
      {"7", 7}, {"-3", -3}, {"+4", 4}, {"010", 10}, {"12abc", 12}, {"1e3", 1}, {"abc", 0}, {"", 0},
  };
  for (const auto& [letter, field] : options) {
    for (const auto& [text, number] : texts) {
      Expr::Global->*field = 99;
      Apply(letter, text);
      EXPECT_EQ(Expr::Global->*field, number) << letter << " '" << text << "'";
    }
  }
}

TEST_F(OptionsTest, TextsAreCopied)
{
  Apply('G', "my file");
  Apply('N', "a:b:");
  Apply('P', "c:");
  EXPECT_EQ(global->_GNUPLOTFILE, "my file");
  EXPECT_EQ(global->_NOPRINTLIST, "a:b:");
  EXPECT_EQ(global->_PRINTLIST, "c:");
}

TEST_F(OptionsTest, ATerminalTurnsGnuplotOn)
{
  Apply('g', "png");
  EXPECT_TRUE(global->_GNUPLOT);
  EXPECT_EQ(global->_GNUPLOTOUTPUT, "png");
}

TEST_F(OptionsTest, TmaxAndThePrintIntervalAreReadAsDecimals)
{
  const struct {
    char letter;
    Mpf GlobalData::*field;
  } options[] = {{'t', &GlobalData::_TMAX}, {'F', &GlobalData::_PRINTEVERY}};
  for (const auto& [letter, field] : options) {
    // The field keeps its precision, which is enough for these digits to differ from a double's.
    Apply(letter, "0.1");
    Mpf tenTimes;
    mpf_mul_ui(tenTimes, Expr::Global->*field, 10);
    mpf_sub(tenTimes, tenTimes, global->_ONE);
    mpf_abs(tenTimes, tenTimes);
    EXPECT_LT(mpf_cmp(tenTimes, Mpf("1e-18")), 0) << letter;

    Apply(letter, "-2.5e-1");
    EXPECT_EQ(mpf_cmp_d(Expr::Global->*field, -0.25), 0) << letter;
    for (const char* const noNumber : {"", "abc", "1,5", "1.5x"}) {
      Apply(letter, noNumber);
      EXPECT_EQ(mpf_cmp_d(Expr::Global->*field, -0.25), 0) << letter << " '" << noNumber << "'";
    }
  }
}

TEST_F(OptionsTest, TheAccuracyIsReadAsADouble)
{
  Apply('a', "1e-20");
  EXPECT_EQ(mpf_cmp_d(global->_ACCURACY, 1e-20), 0);
  Apply('a', "abc");
  EXPECT_EQ(global->_ACCURACY.Sign(), 0);
}

TEST_F(OptionsTest, TheStepIsReadAsADoubleAndRefillsTheStepFactors)
{
  Apply('s', "0.01");
  EXPECT_EQ(mpf_cmp_d(global->_STEP, 0.01), 0);
  ASSERT_EQ(global->_STEPDIV.Size(), 35U);
  Mpf half;
  mpf_div_ui(half, global->_STEP, 2);
  EXPECT_EQ(mpf_cmp(global->_STEPDIV[1], global->_STEP), 0);
  EXPECT_EQ(mpf_cmp(global->_STEPDIV[2], half), 0);
  Apply('s', "abc");
  EXPECT_EQ(global->_STEP.Sign(), 0);
  EXPECT_EQ(global->_STEPDIV[1]->_mp_size, 0);
}

TEST_F(OptionsTest, TheTermCountDependsOnTheOrderOfMaximumOrderAndZeroTerms)
{
  const struct {
    std::vector<std::pair<char, const char*>> options;
    int termCount;
    int zeroTerms;
  } rows[] = {
      {{{'o', "20"}}, 24, 4},
      {{{'z', "5"}}, 39, 5},
      {{{'z', "6"}}, 40, 6},
      {{{'z', "6"}, {'o', "20"}}, 26, 6},
      {{{'o', "20"}, {'z', "6"}}, 30, 6},
      {{{'z', "5"}, {'z', "5"}}, 44, 5},
      {{{'o', "abc"}}, 4, 4},
  };
  for (const auto& [options, termCount, zeroTerms] : rows) {
    const ScopedGlobal fresh;
    for (const auto& [letter, argument] : options) Apply(letter, argument);
    const std::string description = testing::PrintToString(options);
    EXPECT_EQ(fresh->_NTERMS, termCount) << description;
    EXPECT_EQ(fresh->_ZEROTERMS, zeroTerms) << description;
    EXPECT_EQ(fresh->_STEPDIV.Size(), static_cast<std::size_t>(termCount) + 1) << description;
  }
}

TEST_F(OptionsTest, APeriodWatchHasANameACountAndADerivative)
{
  const struct {
    const char* text;
    const char* name;
    int count;
    double derivative;
  } rows[] = {
      {"y:3:0", "y", 3, 0},
      {"y:3:0.5", "y", 3, 0.5},
      {"y':12:-2e1", "y'", 12, -20},
      {":3:0", "", 0, 0},
      {"y", "y", 0, 7},
      {"", "", 0, 7},
      {"y:3", "y", 3, 7},
      {"y:3:", "y", 3, 7},
      {"y:3:x", "y", 3, 7},
      {"y::1", "y", 0, 1},
      {"y:3x:1", "y", 3, 1},
      // Only the first two colons divide.
      {"y:3:1:2", "y", 3, 7},
  };
  for (const auto& [text, name, count, derivative] : rows) {
    global->_PERIODEQ = "old";
    global->_PERIODSAME = 9;
    mpf_set_ui(global->_PERIODDERIV, 7);
    Apply('r', text);
    EXPECT_EQ(global->_PERIODEQ, name) << text;
    EXPECT_EQ(global->_PERIODSAME, count) << text;
    EXPECT_EQ(mpf_cmp_d(global->_PERIODDERIV, derivative), 0) << text;
  }
}

TEST_F(OptionsTest, ThePrecisionAppliesToNumbersMadeAfterwards)
{
  const mp_bitcnt_t before = mpf_get_prec(global->_PI);
  Apply('W', "200");
  EXPECT_GE(mpf_get_default_prec(), 200U);
  EXPECT_GE(mpf_get_prec(Mpf()), 200U);
  EXPECT_EQ(mpf_get_prec(global->_PI), before);
}

}  // namespace

}  // namespace varno
