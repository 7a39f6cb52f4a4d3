#include "varno/config/usage_text.h"

#include <iomanip>
#include <regex>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

#include <gtest/gtest.h>

#include "tests/varno/support/scoped_global.h"
#include "varno/core/global_data.h"
#include "varno/core/number_output.h"
#include "version.h"

namespace varno {

namespace {

/// The text, with "@" in the place of every value, and version and day of the build masked.
constexpr std::string_view kUsageText =
    "\n"
    "VARNO/C  VERSION  (Mmm dd yyyy)       WITH GMP ARITHMETICS            ZENA\n"
    "---------------------------------------------------------------------\n"
    " varno [-3 number] [-A {1|0}] [-a number] [-d {1|0}] [-D {1|0}]       \n"
    "      [-f {1|0}]  [-F {0|1|2|3}] [-G filename] [-g {x11|fig|png|gif|...}]\n"
    "      [-i {1|0}]  [-L {1|0}]  [-o number] [-p number] [-s number] \n"
    "      [-S number] [-t number] [-U {1|0}] [-v] [-w number] [-W number] [-x number] [-z number] "
    "       \n"
    "      [-O {1|0}] [-P {eqName:}+] [-N {eqName:}+] [-T {1|0}] [file]  \n"
    "\n"
    "Options:                                                             \n"
    "  -3       number of points in along x-axis for 3D function (gnuplot)\n"
    "           0=create output for 2D function (default @)\n"
    "  -A       print all values for 3D (0=only for T=Tmax) (default @)\n"
    "  -a       sets accuracy (default @)\n"
    "  -d       dumps tree of equations (0/1) (default @)\n"
    "  -D       dumps 1:DY values 2:derivatives 3:both (default @)\n"
    "  -f       use fixed step (0/1) (default @ & step=@)\n"
    "  -F       print results (0:all),(-:x vals in <0;Tmax>,\n"
    "           (+:vals for t=i*x) (default: @)\n"
    "  -G       filename for generated gnuplot .sh (default @)\n"
    "  -g       output for gnuplot, choose output (default @)\n"
    "  -i       simplify very small numbers (1/0) (default @)\n"
    "  -L       print only the results for t=Tmax (1/0) (default @)\n"
    "  -o       sets maximum order (default @)\n"
    "  -p       sets precision of printing (default @ chars)\n"
    "  -r       watch for periodicals; format=eq_name:#_same_vals:1st_deriv.\n"
    "  -R       size of buffer for detection of periodicals (default @)\n"
    "  -s       sets initial step size (default @)\n"
    "  -S       stop computation when steady state is reached (def. @)\n"
    "  -t       sets maximum time Tmax (default @)\n"
    "  -U       use all Taylor series terms set by -o (default @)\n"
    "  -v       print version number and exit\n"
    "  -w       sets width for output of numbers (default @)\n"
    "  -x       DY exponents difference-stiffness detection (default @)\n"
    "  -X       whether to detect stiff system every step (default @)\n"
    "  -W       sets the arbitrary word size (lib GMP, default=80bits)\n"
    "  -z       sets number of zero Taylor terms (default @)\n"
    "\n"
    "  -O       print column ORDER (1/0) (default @)\n"
    "  -P str   print the equations in the string 'str'. The string has \n"
    "           the following form:\n"
    "                 name1:name2:name3:...:\n"
    "           where nameX are names of the equations. Note the presence\n"
    "           of the colon after the last name\n"
    "  -N str   do not print the equations in the string 'str'\n"
    "  -T       print temporary equations (1/0) (default @)\n"
    "\n"
    "Example of an input:                                                 \n"
    "  y1'= t  & 0;                                                       \n"
    "  y2'= y1 & 1;                                                       \n"
    "\n"
    "Execution:                                                           \n"
    " varno -g png -P y2: in.varno > output.sh &&. output.sh              \n"
    "\n"
    "'t' is reserved for time                                             \n"
    "\n"
    "It is possible to setup several parameters in ~/.varnorc file!       \n"
    "\n";

/// The values that the text shows by default, in its order, "-f" with a step behind the flag.
const std::vector<std::string> kDefaults = {
    "0",  "0",  " 0.1e-9", "0", "0",      "0", " 0.1e0", "0.0", "output", "x11", "1", "0", "34",
    "11", "50", " 0.1e0",  "0", " 0.1e1", "0", "15",     "20",  "0",      "4",   "1", "0",
};

std::string TextWith(const std::vector<std::string>& values)
{
  std::string text;
  std::size_t next = 0;
  for (const char character : kUsageText) {
    if (character == '@') {
      text += values.at(next++);
    } else {
      text += character;
    }
  }
  EXPECT_EQ(next, values.size());
  return text;
}

/// What is written, with the day of the build masked.
std::string WrittenText()
{
  std::ostringstream out;
  WriteUsage(out);
  const std::regex date("\\([A-Z][a-z]{2} [ 1-3][0-9] [0-9]{4}\\)");
  std::string text = std::regex_replace(out.str(), date, "(Mmm dd yyyy)");
  const std::string title = "VARNO/C  ";
  const std::string version = kVersion;
  const std::size_t place = text.find(title + version + "  (");
  if (place != std::string::npos) text.replace(place + title.size(), version.size(), "VERSION");
  return text;
}

class UsageTextTest : public testing::Test {
 protected:
  const ScopedGlobal global;
};

TEST_F(UsageTextTest, ShowsTheBuiltInSettings)
{
  EXPECT_EQ(WrittenText(), TextWith(kDefaults));
}

TEST_F(UsageTextTest, ShowsTheSettingsThatAreInForce)
{
  global->_3DPOINTS = 8;
  global->_ALL3DVALUES = true;
  mpf_set_d(global->_ACCURACY, 0.25);
  global->_DUMPTREE = true;
  global->_DUMPDY = 3;
  global->_FIXEDSTEP = true;
  global->SetStep(0.5);
  mpf_set_d(global->_PRINTEVERY, -12);
  global->_GNUPLOTFILE = "my file";
  global->_GNUPLOTOUTPUT = "png";
  global->_SIMPLIFYSMALL = false;
  global->_PRINTONLYTMAX = true;
  global->SetTermCount(50);
  global->_PRINTCHARS = -1;
  global->_PERIODBUF = 60;
  global->_STEADYSTOP = 5;
  mpf_set_d(global->_TMAX, 1234.5);
  global->_USEALLTERMS = true;
  global->_PRINTWIDTH = 4;
  global->_STIFFEXPDIFF = 30;
  global->_STIFFEVERYSTEP = true;
  global->_ZEROTERMS = 6;
  global->_PRINTORDER = false;
  global->_PRINTTEMPEQ = true;

  EXPECT_EQ(WrittenText(), TextWith({"8", "1", " 0.25e0", "1", "3", "1", " 0.5e0", "-0.12e2",
                                     "my file", "png", "0", "1", "50", "-1", "60", " 0.5e0", "5",
                                     // As many digits as the width; GMP rounds a half up.
                                     " 0.1235e4", "1", "4", "30", "1", "6", "0", "1"}));
}

TEST_F(UsageTextTest, ThePrecisionShownIsTheBuiltInOne)
{
  mpf_set_default_prec(500);
  EXPECT_NE(WrittenText().find("default=80bits)\n"), std::string::npos);
}

TEST_F(UsageTextTest, LinesArePaddedWithBlanksWhateverTheFillCharacterOfTheStream)
{
  std::ostringstream out;
  out << std::setfill('0');
  WriteUsage(out);
  EXPECT_NE(out.str().find("\nOptions:" + std::string(61, ' ') + '\n'), std::string::npos);
}

TEST_F(UsageTextTest, NumbersAreFormattedAgainAfterwards)
{
  WrittenText();
  std::ostringstream out;
  out << Mpf("0.5");
  EXPECT_EQ(out.str(), " 5.00000000000e-01");
}

}  // namespace

}  // namespace varno
