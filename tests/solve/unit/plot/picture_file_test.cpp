#include "solve/plot/picture_file.h"

#include <filesystem>
#include <fstream>
#include <string>

#include <gtest/gtest.h>

#include "solve/plot/gnuplot_script.h"
#include "tests/solve/support/scratch_path.h"

namespace varno::solve {
namespace {

bool IsWhole(const std::string& name, const std::string& content)
{
  const ScratchPath folder;
  std::filesystem::create_directory(folder.String());
  const std::string file = folder.String() + "/" + name;
  std::ofstream(file) << content;
  bool isWhole = true;
  try {
    RequireWholePicture(file);
  } catch (const PlotError&) {
    isWhole = false;
  }
  return isWhole;
}

// The ends that the three formats prescribe, behind enough bytes of something else
TEST(PictureFile, IsWholeWhenItsEndIsThere)
{
  const std::string bytes(100, '.');
  EXPECT_TRUE(IsWhole("a.png", bytes + "IEND\xAE\x42\x60\x82"));
  EXPECT_TRUE(IsWhole("a.svg", bytes + "</svg>\n\n"));
  EXPECT_TRUE(IsWhole("a.pdf", bytes + "startxref\n100\n%%EOF\n"));
  EXPECT_FALSE(IsWhole("a.png", bytes));
  EXPECT_FALSE(IsWhole("a.svg", bytes + "<g>"));
  EXPECT_FALSE(IsWhole("a.svg", "</svg>" + bytes));
  EXPECT_FALSE(IsWhole("a.pdf", ""));
}

TEST(PictureFile, ADeviceHoldsNoPicture)
{
  EXPECT_THROW(RequireWholePicture("/dev/full"), PlotError);
}

}  // namespace
}  // namespace varno::solve
