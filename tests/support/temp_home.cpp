#include "tests/support/temp_home.h"

#include <cstdlib>
#include <fstream>

namespace support {

namespace {

std::filesystem::path NewFolder()
{
  std::string pattern = std::filesystem::temp_directory_path() / "varno_test.XXXXXX";
  return mkdtemp(pattern.data());
}

}  // namespace

TempHome::TempHome() : folder(NewFolder())
{
  if (const char* const home = std::getenv("HOME")) savedHome = home;
  setenv("HOME", folder.c_str(), 1);
}

TempHome::~TempHome()
{
  if (savedHome) {
    setenv("HOME", savedHome->c_str(), 1);
  } else {
    unsetenv("HOME");
  }
  std::filesystem::remove_all(folder);
}

std::string TempHome::Write(const std::string& name, std::string_view text) const
{
  const std::string path = folder / name;
  std::ofstream(path, std::ios::binary) << text;
  return path;
}

}  // namespace support
