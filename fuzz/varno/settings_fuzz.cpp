// Reads any text as a settings file and shows what the settings have become.

#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>

#include "fuzz/varno/bounded_run.h"
#include "varno/config/settings_file.h"
#include "varno/config/usage_text.h"

namespace {

/// The home folder of this process, which holds the settings file only.
const std::filesystem::path& Home()
{
  static const std::filesystem::path home = [] {
    std::string name = (std::filesystem::temp_directory_path() / "varno-fuzz-XXXXXX").string();
    if (mkdtemp(name.data()) == nullptr) std::abort();
    return std::filesystem::path(name);
  }();
  return home;
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***)
{
  setenv("HOME", Home().c_str(), 1);
  std::atexit([] { std::filesystem::remove_all(Home()); });
  varno::PrepareRuns();
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
  std::ofstream(Home() / ".varnorc", std::ios::binary)
      .write(reinterpret_cast<const char*>(data), static_cast<std::streamsize>(size));
  const varno::BoundedRun run;
  try {
    varno::ReadSettingsFile();
    varno::WriteUsage(std::clog);
  } catch (const varno::EndOfRun&) {
  }
  return 0;
}
