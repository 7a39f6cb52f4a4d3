#pragma once

#include <unistd.h>
#include <utility>

namespace varno::solve {

/// An open file of the system, closed at the end of its life.
class FileDescriptor {
 public:
  /// Takes what open() gave, also when that is -1 for a failure.
  explicit FileDescriptor(int number) : number(number) {}
  FileDescriptor(FileDescriptor&& other) noexcept : number(std::exchange(other.number, -1)) {}
  FileDescriptor& operator=(FileDescriptor&&) = delete;
  ~FileDescriptor()
  {
    if (IsOpen()) ::close(number);
  }

  bool IsOpen() const { return number >= 0; }
  int Get() const { return number; }
  /// Gives it away: somebody else closes it.
  int Release() { return std::exchange(number, -1); }

 private:
  int number;
};

}  // namespace varno::solve
