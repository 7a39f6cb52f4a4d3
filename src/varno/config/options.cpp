#include "varno/config/options.h"

#include <cstdlib>
#include <ostream>

#include "varno/config/setters.h"

namespace varno {

namespace {

/// "name:count:derivative": the equation watched for a period, the number of equal values, and the
/// first derivative there.
void SetPeriodWatch(const char* argument)
{
  std::string rest(argument);
  const auto takeField = [&rest] {
    const std::size_t colon = rest.find(':');
    std::string field = rest.substr(0, colon);
    rest = colon == std::string::npos ? "" : rest.substr(colon + 1);
    return field;
  };
  Expr::Global->_PERIODEQ = takeField();
  Expr::Global->_PERIODSAME = IntegerFromText(takeField().c_str());
  SetNumber<&GlobalData::_PERIODDERIV>(rest.c_str());
  if (Expr::Global->_PERIODEQ.empty()) Expr::Global->_PERIODSAME = 0;
}

void ShowStepMode(std::ostream& out)
{
  out << Expr::Global->_FIXEDSTEP << " & step=" << Expr::Global->_STEP;
}

/// The built-in precision, whatever is set.
void ShowDefaultPrecision(std::ostream& out)
{
  out << 80;
}

constexpr Option kOptions[] = {
    {'3', SetInteger<&GlobalData::_3DPOINTS>,
     "  -3       number of points in along x-axis for 3D function (gnuplot)\n"
     "           0=create output for 2D function (default ",
     Show<&GlobalData::_3DPOINTS>},
    {'A', SetFlag<&GlobalData::_ALL3DVALUES>,
     "  -A       print all values for 3D (0=only for T=Tmax) (default ",
     Show<&GlobalData::_ALL3DVALUES>},
    {'a', SetAccuracy, "  -a       sets accuracy (default ", Show<&GlobalData::_ACCURACY>},
    {'d', SetFlag<&GlobalData::_DUMPTREE>, "  -d       dumps tree of equations (0/1) (default ",
     Show<&GlobalData::_DUMPTREE>},
    {'D', SetInteger<&GlobalData::_DUMPDY>,
     "  -D       dumps 1:DY values 2:derivatives 3:both (default ", Show<&GlobalData::_DUMPDY>},
    {'f', SetFlag<&GlobalData::_FIXEDSTEP>, "  -f       use fixed step (0/1) (default ",
     ShowStepMode},
    {'F', SetNumber<&GlobalData::_PRINTEVERY>,
     "  -F       print results (0:all),(-:x vals in <0;Tmax>,\n"
     "           (+:vals for t=i*x) (default: ",
     Show<&GlobalData::_PRINTEVERY>},
    {'G', SetText<&GlobalData::_GNUPLOTFILE>,
     "  -G       filename for generated gnuplot .sh (default ", Show<&GlobalData::_GNUPLOTFILE>},
    {'g', SetGnuplotTerminal, "  -g       output for gnuplot, choose output (default ",
     Show<&GlobalData::_GNUPLOTOUTPUT>},
    {'i', SetFlag<&GlobalData::_SIMPLIFYSMALL>,
     "  -i       simplify very small numbers (1/0) (default ", Show<&GlobalData::_SIMPLIFYSMALL>},
    {'L', SetFlag<&GlobalData::_PRINTONLYTMAX>,
     "  -L       print only the results for t=Tmax (1/0) (default ",
     Show<&GlobalData::_PRINTONLYTMAX>},
    // The value shown is the term count, not the order.
    {'o', SetMaximumOrder, "  -o       sets maximum order (default ", Show<&GlobalData::_NTERMS>},
    {'p', SetInteger<&GlobalData::_PRINTCHARS>, "  -p       sets precision of printing (default ",
     Show<&GlobalData::_PRINTCHARS>, " chars)"},
    {'r', SetPeriodWatch, "  -r       watch for periodicals; format=eq_name:#_same_vals:1st_deriv.",
     nullptr},
    {'R', SetInteger<&GlobalData::_PERIODBUF>,
     "  -R       size of buffer for detection of periodicals (default ",
     Show<&GlobalData::_PERIODBUF>},
    {'s', SetInitialStep, "  -s       sets initial step size (default ", Show<&GlobalData::_STEP>},
    {'S', SetInteger<&GlobalData::_STEADYSTOP>,
     "  -S       stop computation when steady state is reached (def. ",
     Show<&GlobalData::_STEADYSTOP>},
    {'t', SetNumber<&GlobalData::_TMAX>, "  -t       sets maximum time Tmax (default ",
     Show<&GlobalData::_TMAX>},
    {'U', SetFlag<&GlobalData::_USEALLTERMS>,
     "  -U       use all Taylor series terms set by -o (default ", Show<&GlobalData::_USEALLTERMS>},
    {'v', nullptr, "  -v       print version number and exit", nullptr},
    {'w', SetInteger<&GlobalData::_PRINTWIDTH>,
     "  -w       sets width for output of numbers (default ", Show<&GlobalData::_PRINTWIDTH>},
    {'x', SetInteger<&GlobalData::_STIFFEXPDIFF>,
     "  -x       DY exponents difference-stiffness detection (default ",
     Show<&GlobalData::_STIFFEXPDIFF>},
    {'X', SetFlag<&GlobalData::_STIFFEVERYSTEP>,
     "  -X       whether to detect stiff system every step (default ",
     Show<&GlobalData::_STIFFEVERYSTEP>},
    {'W', SetPrecisionFromText,
     "  -W       sets the arbitrary word size (lib GMP, default=", ShowDefaultPrecision, "bits)"},
    {'z', SetZeroTerms, "  -z       sets number of zero Taylor terms (default ",
     Show<&GlobalData::_ZEROTERMS>},
    {'O', SetFlag<&GlobalData::_PRINTORDER>, "\n  -O       print column ORDER (1/0) (default ",
     Show<&GlobalData::_PRINTORDER>},
    {'P', SetText<&GlobalData::_PRINTLIST>,
     "  -P str   print the equations in the string 'str'. The string has \n"
     "           the following form:\n"
     "                 name1:name2:name3:...:\n"
     "           where nameX are names of the equations. Note the presence\n"
     "           of the colon after the last name",
     nullptr},
    {'N', SetText<&GlobalData::_NOPRINTLIST>,
     "  -N str   do not print the equations in the string 'str'", nullptr},
    {'T', SetFlag<&GlobalData::_PRINTTEMPEQ>,
     "  -T       print temporary equations (1/0) (default ", Show<&GlobalData::_PRINTTEMPEQ>},
};

}  // namespace

std::span<const Option> Options()
{
  return kOptions;
}

const Option* FindOption(int letter)
{
  for (const Option& option : kOptions) {
    if (option.letter == letter) return &option;
  }
  return nullptr;
}

std::string OptionString()
{
  std::string letters;
  for (const Option& option : kOptions) {
    letters += option.letter;
    if (option.apply != nullptr) letters += ':';
  }
  return letters + 'h';
}

}  // namespace varno
