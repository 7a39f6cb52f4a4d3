#include "solve/plot/picture_file.h"

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string_view>

#include "solve/plot/gnuplot_script.h"

namespace varno::solve {

namespace {

/// What stands within the last bytes of a whole picture.
constexpr std::streamoff kLastBytes = 64;

std::string_view EndOf(const std::string& suffix)
{
  if (suffix == ".png") return "IEND";
  if (suffix == ".svg") return "</svg>";
  return "%%EOF";  // .pdf
}

/// The last bytes of a file; none where it cannot be read.
std::string LastBytes(const std::string& file)
{
  std::error_code error;
  if (!std::filesystem::is_regular_file(file, error)) return "";
  std::ifstream picture(file, std::ios::binary);
  if (!picture.seekg(-kLastBytes, std::ios::end)) return "";
  return {std::istreambuf_iterator<char>(picture), {}};
}

}  // namespace

void RequireWholePicture(const std::string& file)
{
  const std::string suffix = std::filesystem::path(file).extension();
  if (LastBytes(file).find(EndOf(suffix)) != std::string::npos) return;
  throw PlotError("--plot: '" + file + "' could not be written to its end: is the disk full?");
}

}  // namespace varno::solve
