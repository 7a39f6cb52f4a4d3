#include "solve/plot/plot_data.h"

#include <cmath>

#include <gtest/gtest.h>

namespace varno::solve {

TEST(PlottedValue, WhatHasNoDoubleIsNoNumber)
{
  EXPECT_EQ(-1.5, PlottedValue("-1.50000000000000000000000000000e+00"));
  EXPECT_EQ(0, PlottedValue("0e-30"));
  EXPECT_EQ(0, PlottedValue("1e-400"));
  EXPECT_TRUE(std::isnan(PlottedValue("nan")));
  EXPECT_TRUE(std::isnan(PlottedValue("1e+400")));
}

TEST(PlotData, SingleRows)
{
  PlotData data{{"t", "x"}, 0, {{"", {0, 1}}, {"", {}}, {"", {1, 2}}}};
  EXPECT_TRUE(data.HasSingleRows());
  data.runs.push_back({"", {0, 1, 2, 3}});
  EXPECT_EQ(2U, data.RowCount(data.runs.back()));
  EXPECT_FALSE(data.HasSingleRows());
}

}  // namespace varno::solve
