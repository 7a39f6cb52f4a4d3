"""Version line and usage text."""

from number_format import plain_number

VERSION = b"VARNO/C version 1.0\n"
BUILD_DATE = "Jan  1 2000"  # varies from build to build; whoever compares masks it
PADDING = 69

_SYNOPSIS = """\
 varno [-3 number] [-A {1|0}] [-a number] [-d {1|0}] [-D {1|0}]       
      [-f {1|0}]  [-F {0|1|2|3}] [-G filename] [-g {x11|fig|png|gif|...}]
      [-i {1|0}]  [-L {1|0}]  [-o number] [-p number] [-s number] 
      [-S number] [-t number] [-U {1|0}] [-v] [-w number] [-W number] [-x number] [-z number]        
      [-O {1|0}] [-P {eqName:}+] [-N {eqName:}+] [-T {1|0}] [file]  

"""

_OPTIONS = """\
  -3       number of points in along x-axis for 3D function (gnuplot)
           0=create output for 2D function (default {matrix_columns})
  -A       print all values for 3D (0=only for T=Tmax) (default {all_matrices})
  -a       sets accuracy (default {accuracy})
  -d       dumps tree of equations (0/1) (default {dump_tree})
  -D       dumps 1:DY values 2:derivatives 3:both (default {dump_terms})
  -f       use fixed step (0/1) (default {fixed_step} & step={step})
  -F       print results (0:all),(-:x vals in <0;Tmax>,
           (+:vals for t=i*x) (default: {print_every})
  -G       filename for generated gnuplot .sh (default {gnuplot_file})
  -g       output for gnuplot, choose output (default {gnuplot_terminal})
  -i       simplify very small numbers (1/0) (default {simplify_small})
  -L       print only the results for t=Tmax (1/0) (default {print_only_tmax})
  -o       sets maximum order (default {term_count})
  -p       sets precision of printing (default {digits} chars)
  -r       watch for periodicals; format=eq_name:#_same_vals:1st_deriv.
  -R       size of buffer for detection of periodicals (default {period_buffer})
  -s       sets initial step size (default {step})
  -S       stop computation when steady state is reached (def. {steady_stop})
  -t       sets maximum time Tmax (default {tmax})
  -U       use all Taylor series terms set by -o (default {use_all_terms})
  -v       print version number and exit
  -w       sets width for output of numbers (default {width})
  -x       DY exponents difference-stiffness detection (default {stiff_difference})
  -X       whether to detect stiff system every step (default {stiff_every_step})
  -W       sets the arbitrary word size (lib GMP, default=80bits)
  -z       sets number of zero Taylor terms (default {zero_terms})

  -O       print column ORDER (1/0) (default {print_order})
  -P str   print the equations in the string 'str'. The string has 
           the following form:
                 name1:name2:name3:...:
           where nameX are names of the equations. Note the presence
           of the colon after the last name
  -N str   do not print the equations in the string 'str'
  -T       print temporary equations (1/0) (default {print_temporary})

"""

_EXAMPLE = """\
Example of an input:
  y1'= t  & 0;
  y2'= y1 & 1;

Execution:
 varno -g png -P y2: in.varno > output.sh &&. output.sh

't' is reserved for time

It is possible to setup several parameters in ~/.varnorc file!
"""


def _pad(line):
    return line.ljust(PADDING) if line else line


def _show(record, value):
    if isinstance(value, bool):
        return str(int(value))
    if isinstance(value, int):
        return str(value)
    text = value if isinstance(value, bytes) else plain_number(record, value)
    return text.decode(errors="surrogateescape")


class _Values(dict):
    def __init__(self, record):
        super().__init__()
        self.record = record

    def __missing__(self, name):
        return _show(self.record, getattr(self.record, name))


def usage(record):
    text = (
        f"\nVARNO/C  1.0  ({BUILD_DATE})       WITH GMP ARITHMETICS            ZENA\n"
        + "-"*PADDING + "\n" + _SYNOPSIS + _pad("Options:") + "\n"
        + _OPTIONS.format_map(_Values(record))
        + "\n".join(map(_pad, _EXAMPLE.splitlines())) + "\n\n")
    return text.encode(errors="surrogateescape")
