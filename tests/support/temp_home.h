#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

namespace support {

/// A new folder that is HOME for the length of the scope.
class TempHome {
 public:
  TempHome();
  ~TempHome();
  TempHome(const TempHome&) = delete;
  TempHome& operator=(const TempHome&) = delete;

  const std::filesystem::path& Folder() const { return folder; }
  /// Writes a file in the folder and returns its path.
  std::string Write(const std::string& name, std::string_view text) const;

 private:
  const std::filesystem::path folder;
  std::optional<std::string> savedHome;
};

}  // namespace support
