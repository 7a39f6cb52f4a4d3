// Scripts written out by hand.

#include "solve/plot/gnuplot_script.h"

#include <cmath>
#include <string>

#include <gtest/gtest.h>

namespace varno::solve {

namespace {

const std::string kPng = "set terminal pngcairo noenhanced size 960,600\nset output 'a.png'\n";
const std::string kGrid = "set grid\nset xyplane relative 0\n";

PlotRequest Request(const std::vector<std::string>& axes = {})
{
  return {.file = "a.png", .axes = axes, .title = {}, .xLabel = {}, .yLabel = {}};
}

std::string ErrorOf(const PlotRequest& request)
{
  try {
    CheckRequest(request, {"t", "x"});
  } catch (const PlotError& error) {
    return error.what();
  }
  return {};
}

}  // namespace

TEST(GnuplotScript, AllColumnsOverTime)
{
  const PlotData data{{"t", "x", "x'"}, 0, {{"", {0, 1, 2, 0.5, 1.5, -1e-20}}}};
  EXPECT_EQ(GnuplotScript(Request(), data),
            kPng +
                "$run1 << END\n0 1 2\n0.5 1.5 -9.9999999999999995e-21\nEND\n"
                "set xlabel 't'\nset key outside\n" +
                kGrid +
                "plot $run1 using 1:2 with lines title 'x', \\\n"
                "     $run1 using 1:3 with lines title 'x'''\n");
}

TEST(GnuplotScript, OneCurveNeedsNoKey)
{
  const PlotData data{{"t", "x", "v"}, 0, {{"", {0, 1, 2}}}};
  PlotRequest request = Request({"x", "v"});
  request.title = "it's round";
  request.xLabel = "place / m";
  EXPECT_EQ(GnuplotScript(request, data),
            kPng +
                "$run1 << END\n0 1 2\nEND\n"
                "set title 'it''s round'\nset xlabel 'place / m'\nset ylabel 'v'\nset key off\n" +
                kGrid + "plot $run1 using 2:3 with lines title 'v'\n");
}

TEST(GnuplotScript, ThreeAxes)
{
  const PlotData data{{"t", "x", "v"}, 0, {{"", {0, 1, NAN}}}};
  EXPECT_EQ(GnuplotScript(Request({"t", "x", "v"}), data),
            kPng +
                "$run1 << END\n0 1 nan\nEND\n"
                "set xlabel 't'\nset ylabel 'x'\nset zlabel 'v'\nset key off\n" +
                kGrid + "splot $run1 using 1:2:3 with lines title 'x'\n");
}

TEST(GnuplotScript, RunsAreCurvesOfTheirOwn)
{
  const PlotData data{
      {"mu", "t", "x"}, 1, {{"mu = 1", {1, 0, 5, 1, 1, 6}}, {"mu = 2", {2, 0, 5, 2, 1, 7}}}};
  EXPECT_EQ(GnuplotScript(Request(), data),
            kPng +
                "$run1 << END\n1 0 5\n1 1 6\nEND\n$run2 << END\n2 0 5\n2 1 7\nEND\n"
                "set xlabel 't'\nset ylabel 'x'\nset key outside\n" +
                kGrid +
                "plot $run1 using 2:3 with lines title 'mu = 1', \\\n"
                "     $run2 using 2:3 with lines title 'mu = 2'\n");
}

TEST(GnuplotScript, SingleRowsGoOverTheLastSweptName)
{
  const PlotData data{{"mu", "t", "x"}, 1, {{"mu = 1", {1, 9, 5}}, {"mu = 2", {2, 9, 6}}}};
  EXPECT_EQ(GnuplotScript(Request(), data),
            kPng +
                "$runs << END\n1 9 5\n2 9 6\nEND\n"
                "set xlabel 'mu'\nset ylabel 'x'\nset key off\n" +
                kGrid +
                "plot $runs using 1:3 with linespoints pointtype 7 pointsize 0.4 title 'x'\n");
}

// As for a diagram of bifurcations.
TEST(GnuplotScript, ManyRowsOverASweptNameArePoints)
{
  const PlotData data{{"mu", "t", "x"}, 1, {{"mu = 1", {1, 8, 5, 1, 9, 6}}}};
  EXPECT_NE(GnuplotScript(Request({"mu", "x"}), data).find("using 1:3 with points "),
            std::string::npos);
}

// One run is missing, as one that failed; they come in any order.
TEST(GnuplotScript, TwoSweptNamesAreAMap)
{
  const PlotData data{
      {"a", "b", "t", "x"}, 2, {{"", {2, 4, 9, 7}}, {"", {1, 3, 9, 5}}, {"", {2, 3, 9, 6}}}};
  EXPECT_EQ(GnuplotScript(Request({"a", "b", "x"}), data),
            kPng +
                "$runs << END\n1 3 5\n2 3 6\n1 4 nan\n2 4 7\nEND\n"
                "set xlabel 'a'\nset ylabel 'b'\nset cblabel 'x'\nset key off\n"
                "set autoscale xfix\nset autoscale yfix\n"
                "plot $runs using 1:2:3 with image title ''\n");
}

TEST(GnuplotScript, PointsAnywhereAreNoImage)
{
  const PlotData data{
      {"a", "b", "t", "x"}, 2, {{"", {1, 1, 9, 5}}, {"", {2, 2, 9, 6}}, {"", {3, 3, 9, 7}}}};
  EXPECT_NE(GnuplotScript(Request({"a", "b", "x"}), data)
                .find("$runs << END\n1 1 5\n2 2 6\n3 3 7\nEND\n"),
            std::string::npos);
  EXPECT_NE(GnuplotScript(Request({"a", "b", "x"}), data).find(":3 with points "),
            std::string::npos);
}

TEST(GnuplotScript, ManyCurvesHaveNoKey)
{
  PlotData data{{"mu", "t", "x"}, 1, {}};
  for (int i = 0; i < 25; ++i) data.runs.push_back({"mu", {1, 0, 5, 1, 1, 6}});
  EXPECT_NE(GnuplotScript(Request(), data).find("set key off"), std::string::npos);
}

TEST(GnuplotScript, Kinds)
{
  const PlotData data{{"t", "x"}, 0, {{"", {0, 1}}}};
  PlotRequest request = Request();
  request.file = "-";
  EXPECT_TRUE(
      GnuplotScript(request, data).starts_with("set terminal dumb noenhanced size 79,24\n$run1"));
  request.file = "it's.svg";
  EXPECT_TRUE(GnuplotScript(request, data)
                  .starts_with("set terminal svg noenhanced size 960,600 dynamic\n"
                               "set output 'it''s.svg'\n"));
  // gnuplot reads quotes in a row wrongly within single quotes.
  request.file = "f''.svg";
  EXPECT_NE(GnuplotScript(request, data).find("set output 'f'.\"''\".'.svg'\n"), std::string::npos);
  request.file = "a.pdf";
  EXPECT_TRUE(GnuplotScript(request, data).starts_with("set terminal pdfcairo"));
}

TEST(GnuplotScript, LongLabelsAreBrokenAtBlanks)
{
  const PlotData data{{"t", "x"}, 0, {{"", {0, 1}}}};
  PlotRequest request = Request();
  request.yLabel = "the height of the stone above the ground, in units of its own size";
  EXPECT_NE(GnuplotScript(request, data)
                .find("set ylabel 'the height of the stone above the ground, in'.\"\\n\"."
                      "'units of its own size'\n"),
            std::string::npos);
}

TEST(GnuplotScript, TerminalsHaveNoRoomAtTheSide)
{
  const PlotData data{{"t", "x"}, 0, {{"", {0, 1}}}};
  PlotRequest request = Request();
  request.file = "-";
  request.title = "A stone";
  request.yLabel = "height";
  const std::string script = GnuplotScript(request, data);
  EXPECT_NE(script.find("set title 'A stone'.\"\\n\".'height'\n"), std::string::npos);
  EXPECT_EQ(script.find("set ylabel"), std::string::npos);
}

TEST(CheckRequest, TellsWhatIsWrong)
{
  EXPECT_EQ("", ErrorOf(Request({"t", "x"})));
  EXPECT_EQ("--axes: there is no column 'v', only t, x", ErrorOf(Request({"t", "v"})));
  PlotRequest request = Request();
  for (const char* name : {"a", "a.jpg", "png", ".p"}) {
    request.file = name;
    EXPECT_NE("", ErrorOf(request)) << name;
  }
}

}  // namespace varno::solve
