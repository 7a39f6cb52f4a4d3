#pragma once

#include <map>
#include <string>

#include <gmp.h>

#include "arith/mpf.h"
#include "arith/term_array.h"
#include "varno/core/expr.h"

namespace varno {

using arith::Mpf;
using arith::TermArray;

/// Start values by variable name; a derivative is named by the variable and its apostrophes.
using StartValueTable = std::map<std::string, Mpf>;

/// The variables by name. Its order, bytewise by name, is the order of every walk and column.
using EquationTable = std::map<std::string, Expr::Ref>;

/// The one record of all settings, the numeric constants, the state of the solver and the tables.
///
/// It is reached through Expr::Global. Its numbers are built before any precision is set and keep
/// GMP's own initial precision (64 bits at least), whatever the precision of the run.
struct GlobalData {
  /// Sets every default.
  GlobalData();
  /// Takes the equations apart first: nodes that refer to one another keep each other alive.
  ~GlobalData();
  GlobalData(const GlobalData&) = delete;
  GlobalData& operator=(const GlobalData&) = delete;

  /// Sets the number of Taylor terms and builds `_STEPDIV` anew, at the precision now in force. A
  /// negative count is kept but has no storage; one beyond all memory ends the run.
  void SetTermCount(long count);

  /// Sets the step and refills `_STEPDIV` from it.
  void SetStep(double h);
  void SetStep(mpf_srcptr h);

  // --- Settings: the equations' series ---
  int _NTERMS = 15;    ///< Taylor terms computed at most: maximum order plus `_ZEROTERMS`
  int _ZEROTERMS = 4;  ///< small terms in a row that end a series
  bool _USEALLTERMS = false;
  Mpf _ACCURACY;  ///< relative size of a small term; absolute tolerance of everything else
  bool _SIMPLIFYSMALL = true;

  // --- Settings: the run ---
  Mpf _TMAX;  ///< final time
  bool _FIXEDSTEP = false;
  int _STEADYSTOP = 0;           ///< passes a steady state must hold to end the run; 0 = off
  int _STIFFEXPDIFF = 20;        ///< difference of binary exponents that signals a stiff system
  bool _STIFFEVERYSTEP = false;  ///< test for stiffness in every step
  std::string _PERIODEQ;         ///< name of the equation watched for a period
  int _PERIODSAME = 0;           ///< equal values wanted; above 0 = the watch is on
  Mpf _PERIODDERIV;              ///< first derivative at a period point; stored, not used
  int _PERIODBUF = 50;           ///< size of the sample buffer of the watch

  // --- Settings: what is printed ---
  Mpf _PRINTEVERY;  ///< 0: every step; x > 0: at multiples of x
  bool _PRINTONLYTMAX = false;
  bool _PRINTORDER = true;
  bool _PRINTTEMPEQ = false;
  std::string _PRINTLIST;    ///< "name1:name2:", empty = all
  std::string _NOPRINTLIST;  ///< "name1:name2:"
  bool _DUMPTREE = false;
  int _DUMPDY = 0;  ///< bit 1: Taylor terms, bit 2: derivatives

  // --- Settings: number format ---
  int _PRINTWIDTH = 15;
  int _PRINTCHARS = 11;     ///< digits after the point
  bool _FMT_FLAG = true;    ///< exponent form; otherwise fixed point
  int _FMT_INT = 2;         ///< least number of exponent digits
  bool _FMT_FLAG2 = false;  ///< plain-number mode, on while the usage text is written
  char _FILLCHAR = ' ';     ///< stands where a negative number has its sign

  // --- Settings: gnuplot ---
  bool _GNUPLOT = false;
  std::string _GNUPLOTOUTPUT = "x11";  ///< terminal
  std::string _GNUPLOTFILE = "output";
  int _3DPOINTS = 0;  ///< values per line of the matrix layout; 0 = table
  bool _ALL3DVALUES = false;

  // --- Constants ---
  Mpf _ZERO;
  Mpf _ONE;
  Mpf _PI;
  Mpf _PI_2;     ///< 2 pi, in spite of its name
  Mpf _HALF_PI;  ///< pi / 2
  /// On purpose only as accurate as the default accuracy 1e-10, at any precision.
  Mpf _LN2;
  Mpf _BIG;
  Mpf _NEGBIG;

  // --- State of the solver; the integration loop writes it unless noted ---
  int _WORK0 = 0;            ///< order: most terms used in this pass; raised by the summation
  int _STEPNO = 0;           ///< step counter: the stamp of every cache in the nodes
  int _STEPNO_AUX = -1;      ///< equals `_STEPNO` only after a rejected step: start values stay
  bool _RESET_FLAG = false;  ///< makes the next Expr::Value compute; Value clears it
  Mpf _T;                    ///< time t
  Mpf _STEP;                 ///< step h; written through SetStep
  TermArray _STEPDIV;        ///< entry 0: 0, entry k: h / k; empty until first set
  int _TEMPCOUNT = 0;        ///< temporary equations made so far; conversion counts
  bool _SELFMET = false;     ///< a function met itself in its own conversion; conversion sets it
  Mpf _STIFFMIN;             ///< smallest last term of the last stiffness test
  Mpf _STIFFMAX;             ///< largest last term of the last stiffness test

  // --- Tables; the parser fills them, conversion adds the temporary equations ---
  EquationTable _EQUATIONS;
  StartValueTable _STARTVALUES;

 private:
  void ComputeLn2();
  void FillStepDiv();
};

}  // namespace varno
