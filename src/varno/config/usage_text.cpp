#include "varno/config/usage_text.h"

#include <iomanip>
#include <ostream>
#include <string>

#include "varno/config/options.h"
#include "varno/core/number_output.h"
#include "version.h"

namespace varno {

namespace {

constexpr int kLineWidth = 69;

void WritePadded(std::ostream& out, const char* line)
{
  out << std::left << std::setfill(' ') << std::setw(kLineWidth) << line << std::right << '\n';
}

void WriteSynopsis(std::ostream& out)
{
  out << "\nVARNO/C  " << kVersion
      << "  (" __DATE__ ")       WITH GMP ARITHMETICS            ZENA\n"
      << std::string(kLineWidth, '-') << '\n'
      << " varno [-3 number] [-A {1|0}] [-a number] [-d {1|0}] [-D {1|0}]       \n"
         "      [-f {1|0}]  [-F {0|1|2|3}] [-G filename] [-g {x11|fig|png|gif|...}]\n"
         "      [-i {1|0}]  [-L {1|0}]  [-o number] [-p number] [-s number] \n"
         "      [-S number] [-t number] [-U {1|0}] [-v] [-w number] [-W number] [-x number] [-z "
         "number]        \n"
         "      [-O {1|0}] [-P {eqName:}+] [-N {eqName:}+] [-T {1|0}] [file]  \n"
         "\n";
}

void WriteOptions(std::ostream& out)
{
  WritePadded(out, "Options:");
  out << PlainNumbersOn;
  for (const Option& option : Options()) {
    out << option.usage;
    if (option.show != nullptr) {
      option.show(out);
      out << option.closing;
    }
    out << '\n';
  }
  out << PlainNumbersOff;
}

void WriteExample(std::ostream& out)
{
  out << '\n';
  WritePadded(out, "Example of an input:");
  WritePadded(out, "  y1'= t  & 0;");
  WritePadded(out, "  y2'= y1 & 1;");
  out << '\n';
  WritePadded(out, "Execution:");
  WritePadded(out, " varno -g png -P y2: in.varno > output.sh &&. output.sh");
  out << '\n';
  WritePadded(out, "'t' is reserved for time");
  out << '\n';
  WritePadded(out, "It is possible to setup several parameters in ~/.varnorc file!");
  out << '\n';
}

}  // namespace

void WriteUsage(std::ostream& out)
{
  WriteSynopsis(out);
  WriteOptions(out);
  WriteExample(out);
  out << std::flush;
}

}  // namespace varno
