#include "varno/output/gnuplot_script.h"

#include <sstream>
#include <string>

#include <gtest/gtest.h>

#include "tests/varno/support/parsed_input.h"
#include "tests/varno/support/scoped_global.h"
#include "varno/core/global_data.h"
#include "varno/expr/algebraic.h"
#include "varno/parser/equation_table.h"

namespace varno {

namespace {

std::string Head()
{
  std::ostringstream out;
  WriteScriptHead(out);
  return out.str();
}

std::string Tail()
{
  std::ostringstream out;
  WriteScriptTail(out);
  return out.str();
}

/// With the equations a and b, and the file name "plot".
class GnuplotScript : public testing::Test {
 protected:
  GnuplotScript()
  {
    global->_GNUPLOTFILE = "plot";
    EXPECT_TRUE(ParsedInput("b = 2; a = 1;").accepted);
  }

  static void Enter(const char* name)
  {
    EnterEquation(Expr::Ref(new Algebraic(name, Expr::Ref())));
  }

  /// The head of the script around the axis labels and the commands from "set term" on.
  static std::string HeadWith(const std::string& labels, const std::string& commands)
  {
    return "#!/bin/bash\n"
           "# RUN THIS SCRIPT TO GET THE FILES REQUIRED FOR GNUPLOT!!!\n"
           "cat<<END_OF_CMDS > plot.p\n"
           "# --8<---file: plot.p ----------------------------------\n"
           "# Note: for persistent window in x11 start gnuplot:  gnuplot -persist plot.p\n"
           "#\n"
           "#\n"
           "set title \"Output from VARNO/C\"\n" +
           labels + commands +
           "\n\nEND_OF_CMDS\n"
           "cat <<END_OF_DATA > plot.dat\n"
           "\n"
           "# --8<---file: plot.dat ----------------\n";
  }

  /// The same for the table layout, where the y axis has a label.
  static std::string TableHead(const std::string& label, const std::string& commands)
  {
    return HeadWith("set xlabel \"Time\"\nset ylabel \"" + label + "\"\n\n", commands);
  }

  const ScopedGlobal global;
  const std::string orderPlot = "'plot.dat' using 2:1 title 'ORD' with histeps";
  const std::string matrixLabels =
      "set xlabel \"x\"\nset ylabel \"y\"\nset surface\nset hidden3d\nset contour\n"
      "set cntrparam cubicspline\nset cntrparam levels 16\n\n";
};

TEST_F(GnuplotScript, TheHeadPlotsTheOrderAndEveryColumn)
{
  EXPECT_EQ(Head(),
            TableHead("ORD  a b", "set term x11\nplot " + orderPlot +
                                      ", \\\n     'plot.dat' using 2:3 title 'a' with lines"
                                      ", \\\n     'plot.dat' using 2:4 title 'b' with lines"));
}

TEST_F(GnuplotScript, WithoutTheOrderColumnTheFirstPlotHasNoSeparator)
{
  global->_PRINTORDER = false;
  EXPECT_EQ(Head(), TableHead(" a b",
                              "set term x11\nplot "
                              "     'plot.dat' using 1:2 title 'a' with lines"
                              ", \\\n     'plot.dat' using 1:3 title 'b' with lines"));
}

TEST_F(GnuplotScript, ATerminalOtherThanX11WritesIntoAFileNamedAfterIt)
{
  global->_EQUATIONS.clear();
  global->_GNUPLOTOUTPUT = "png";
  EXPECT_EQ(Head(), TableHead("ORD ", "set term png\nset out \"plot.png\"\n\nplot " + orderPlot));
  global->_GNUPLOTOUTPUT = "x11 persist";
  EXPECT_EQ(
      Head(),
      TableHead("ORD ", "set term x11 persist\nset out \"plot.x11 persist\"\n\nplot " + orderPlot));
}

TEST_F(GnuplotScript, VariablesThatAreNotPrintedAreNotPlotted)
{
  global->_NOPRINTLIST = "a:";
  Enter("a");
  EXPECT_EQ(Head(),
            TableHead("ORD  b", "set term x11\nplot " + orderPlot +
                                    ", \\\n     'plot.dat' using 2:3 title 'b' with lines"));
}

TEST_F(GnuplotScript, TemporariesArePlottedWhenTheyArePrinted)
{
  global->_EQUATIONS.clear();
  Enter("%0");
  EXPECT_EQ(Head(), TableHead("ORD ", "set term x11\nplot " + orderPlot));
  global->_PRINTTEMPEQ = true;
  EXPECT_EQ(Head(),
            TableHead("ORD  %0", "set term x11\nplot " + orderPlot +
                                     ", \\\n     'plot.dat' using 2:3 title '%0' with lines"));
}

TEST_F(GnuplotScript, APercentSignInsideANameHidesTheColumnButNotThePlot)
{
  Enter("a%");
  EXPECT_EQ(Head(),
            TableHead("ORD  a b", "set term x11\nplot " + orderPlot +
                                      ", \\\n     'plot.dat' using 2:3 title 'a' with lines"
                                      // There is no such column, and that of b is 4.
                                      ", \\\n     'plot.dat' using 2:4 title 'a%' with lines"
                                      ", \\\n     'plot.dat' using 2:5 title 'b' with lines"));
}

TEST_F(GnuplotScript, ApostrophesAreDoubledInTitlesOnly)
{
  global->_EQUATIONS.clear();
  ASSERT_TRUE(ParsedInput("y''' = 1;").accepted);
  EXPECT_EQ(Head(), TableHead("ORD  y y' y''",
                              "set term x11\nplot " + orderPlot +
                                  ", \\\n     'plot.dat' using 2:3 title 'y' with lines"
                                  ", \\\n     'plot.dat' using 2:4 title 'y''' with lines"
                                  ", \\\n     'plot.dat' using 2:5 title 'y''''' with lines"));
}

TEST_F(GnuplotScript, InTheMatrixLayoutOneSurfaceIsPlotted)
{
  global->_3DPOINTS = 2;
  EXPECT_EQ(Head(), HeadWith(matrixLabels, "set term x11\nsplot 'plot.dat'  matrix with lines\n"));
}

TEST_F(GnuplotScript, WithAllMatricesTheRowsBringTheirOwnPlotCommands)
{
  global->_3DPOINTS = 2;
  global->_ALL3DVALUES = true;
  global->_GNUPLOTOUTPUT = "gif";
  EXPECT_EQ(Head(), HeadWith(matrixLabels, "set term gif\nset out \"plot.gif\"\n\n"));
}

TEST_F(GnuplotScript, ANegativeNumberOfPointsMeansTheTable)
{
  global->_EQUATIONS.clear();
  global->_3DPOINTS = -1;
  EXPECT_EQ(Head(), TableHead("ORD ", "set term x11\nplot " + orderPlot));
}

TEST_F(GnuplotScript, TheTailEndsTheDataAndRunsGnuplot)
{
  EXPECT_EQ(Tail(), "\nEND_OF_DATA\n\ngnuplot plot.p \n\n");
}

TEST_F(GnuplotScript, TerminalAndFileNameAreWrittenAsTheyAre)
{
  global->_EQUATIONS.clear();
  global->_GNUPLOTFILE = "$a 'b\"";
  EXPECT_EQ(Tail(), "\nEND_OF_DATA\n\ngnuplot $a 'b\".p \n\n");
  EXPECT_NE(Head().find("\nplot '$a 'b\".dat' using 2:1"), std::string::npos);
  EXPECT_NE(Head().find("\ncat <<END_OF_DATA > $a 'b\".dat\n"), std::string::npos);
}

}  // namespace

}  // namespace varno
