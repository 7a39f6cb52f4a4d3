#pragma once

#include <filesystem>
#include <string>
#include <unistd.h>

#include <gtest/gtest.h>

namespace varno::solve {

/// A path that no other process uses; what stands there is removed at the end of its life.
class ScratchPath {
 public:
  ScratchPath() : path(testing::TempDir() + "varno_solve_" + std::to_string(::getpid()))
  {
    std::filesystem::remove_all(path);
  }
  ScratchPath(const ScratchPath&) = delete;
  ScratchPath& operator=(const ScratchPath&) = delete;
  ~ScratchPath() { std::filesystem::remove_all(path); }

  const std::string& String() const { return path; }

 private:
  std::string path;
};

}  // namespace varno::solve
