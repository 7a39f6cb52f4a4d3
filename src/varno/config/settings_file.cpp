#include "varno/config/settings_file.h"

#include <algorithm>
#include <cctype>
#include <cstdlib>
#include <fstream>
#include <iostream>
#include <iterator>
#include <string_view>

#include "varno/config/setters.h"
#include "varno/sys/messages.h"

namespace varno {

namespace {

struct Keyword {
  std::string_view text;
  void (*apply)(const char* value);
  std::string_view report;
};

// The wording of the reports is kept as users know it, slips included.
constexpr Keyword kKeywords[] = {
    {"TMAX", SetNumber<&GlobalData::_TMAX>, "MaxTime = "},
    {"MAXORDER", SetMaximumOrder, "MaxOrder = "},
    {"PRINTORD", SetFlag<&GlobalData::_PRINTORDER>, "Print order = "},
    {"ALL3DVALUES", SetFlag<&GlobalData::_ALL3DVALUES>, "Print all values (3D) = "},
    {"ACCURACY", SetAccuracy, "Accuracy = "},
    {"DUMPTREE", SetFlag<&GlobalData::_DUMPTREE>, "Dump tree = "},
    {"DUMPDY", SetInteger<&GlobalData::_DUMPDY>, "Dump DY values = "},
    {"FIXEDSTEP", SetFlag<&GlobalData::_FIXEDSTEP>, "Fixed int.step = "},
    {"GNUPLOT_FILENAME", SetText<&GlobalData::_GNUPLOTFILE>, "GnuPlot File = "},
    {"GNUPLOT_OUTPUT", SetGnuplotTerminal, "GnuPlot Output = "},
    {"SIMPLIFYSMALLNUMBERS", SetFlag<&GlobalData::_SIMPLIFYSMALL>, "Ignore small numbers = "},
    {"PRINTONLYTMAX", SetFlag<&GlobalData::_PRINTONLYTMAX>, "Print only Tmax = "},
    {"PRINTNUMCHARS", SetInteger<&GlobalData::_PRINTCHARS>, "Characters of number to print = "},
    {"INITIALINTSTEP", SetInitialStep, "Initial step size = "},
    {"STOPSTEADYSTATE", SetInteger<&GlobalData::_STEADYSTOP>,
     "Step when steady solution is found = "},
    {"PRINTNUMWIDTH", SetInteger<&GlobalData::_PRINTWIDTH>, "Number digits to print = "},
    {"GMPWORDSIZE", SetPrecisionFromText, "GMP word size = "},
    {"ZEROTAYLORTERMS", SetZeroTerms, "Number of Taylor terms equal to zero = "},
    {"PRINTTEMPQ", SetFlag<&GlobalData::_PRINTTEMPEQ>, "Print temporary equations = "},
    {"PRINTEVERYRESULT", SetNumber<&GlobalData::_PRINTEVERY>, "Print every result = "},
    {"STIFFSYSTEMDETECTEXPDIFF", SetInteger<&GlobalData::_STIFFEXPDIFF>,
     "Stiff system detect exponent difference = "},
    {"USEALLTERMS", SetFlag<&GlobalData::_USEALLTERMS>, "Use all terms = "},
    {"STIFFDETECTEVERYSTEP", SetFlag<&GlobalData::_STIFFEVERYSTEP>,
     "Stiff system detected every step  = "},
};
static_assert(std::size(kKeywords) == kUnknownKeyword);

bool IsSpace(char character)
{
  return std::isspace(static_cast<unsigned char>(character)) != 0;
}

bool IsSeparator(char character)
{
  return character == ':' || character == '=';
}

bool IsValueCharacter(char character)
{
  return std::isalnum(static_cast<unsigned char>(character)) != 0 || character == '-' ||
         character == '+';
}

int KeywordIndex(const std::string& text)
{
  const auto found = std::find_if(std::begin(kKeywords), std::end(kKeywords),
                                  [&](const Keyword& keyword) { return keyword.text == text; });
  return static_cast<int>(found - std::begin(kKeywords));
}

/// The line without its comment and outer blanks.
std::string Stripped(std::string line)
{
  constexpr const char* kBlanks = " \t";
  line.erase(std::min(line.find_first_of("#%;"), line.size()));
  line.erase(line.find_last_not_of(kBlanks) + 1);
  line.erase(0, std::min(line.find_first_not_of(kBlanks), line.size()));
  return line;
}

std::string SettingsFileName()
{
  const char* const home = std::getenv("HOME");
  return std::string(home != nullptr ? home : ".") + "/.varnorc";
}

}  // namespace

void ReadSettingsFile()
{
  std::ifstream file(SettingsFileName());
  int lineNumber = 0;
  for (std::string line; std::getline(file, line);) {
    ++lineNumber;
    line = Stripped(line);
    if (line.empty()) continue;
    std::string value;
    ApplySetting(ParseSettingLine(line, value, lineNumber), value);
  }
}

int ParseSettingLine(const std::string& line, std::string& value, int lineNumber)
{
  const auto end = line.end();
  auto position = std::find_if_not(line.begin(), end, IsSpace);

  // White space inside a keyword does not count: "max order" is MAXORDER.
  std::string keyword;
  for (; position != end && !IsSeparator(*position); ++position) {
    if (IsSpace(*position)) continue;
    keyword += static_cast<char>(std::toupper(static_cast<unsigned char>(*position)));
  }
  if (position != end) ++position;
  position = std::find_if_not(position, end, IsSpace);
  value.assign(position, std::find_if_not(position, end, IsValueCharacter));

  const int index = KeywordIndex(keyword);
  if (index == kUnknownKeyword) {
    std::clog << tag::kSettingsFileWarning << "Invalid keyword in rc file, line " << lineNumber
              << ": '" << keyword << "'" << std::endl;
  }
  if (value.empty()) {
    std::clog << tag::kSettingsFileWarning << "No value set for option '" << keyword
              << "' in rc file." << std::endl;
    return kNoValue;
  }
  return index;
}

void ApplySetting(int index, const std::string& value)
{
  if (index < 0 || index >= kUnknownKeyword) return;
  const Keyword& keyword = kKeywords[index];
  keyword.apply(value.c_str());
  std::clog << tag::kSetting << keyword.report << value << std::endl;
}

}  // namespace varno
