#include "solve/command/input_file.h"

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <unistd.h>
#include <vector>

#include "solve/command/file_descriptor.h"

namespace varno::solve {

namespace {

constexpr std::size_t kMostBytes = std::size_t{256} << 20;
constexpr std::size_t kBlockBytes = std::size_t{64} << 10;

[[noreturn]] void Fail(const std::string& name, const std::string& reason)
{
  throw InputFileError("cannot read '" + name + "': " + reason);
}

/// Reads up to a block; 0 bytes at the end.
std::size_t ReadBlock(int descriptor, std::vector<char>& block, const std::string& name)
{
  for (;;) {
    const ssize_t count = ::read(descriptor, block.data(), block.size());
    if (count >= 0) return static_cast<std::size_t>(count);
    if (errno != EINTR) Fail(name, std::strerror(errno));
  }
}

std::string ReadAll(int descriptor, const std::string& name)
{
  std::string text;
  std::vector<char> block(kBlockBytes);
  while (const std::size_t count = ReadBlock(descriptor, block, name)) {
    if (const void* nul = std::memchr(block.data(), 0, count)) {
      const auto offset = static_cast<const char*>(nul) - block.data();
      Fail(name, "not a text: the byte at offset " +
                     std::to_string(text.size() + static_cast<std::size_t>(offset)) + " is 0");
    }
    text.append(block.data(), count);
    if (text.size() > kMostBytes) Fail(name, "larger than 256 MiB");
  }
  return text;
}

}  // namespace

InputFile ReadInputFile(const std::string& path)
{
  if (path == "-") return {"<stdin>", ReadAll(STDIN_FILENO, "<stdin>")};
  const FileDescriptor file(::open(path.c_str(), O_RDONLY | O_CLOEXEC));
  if (!file.IsOpen()) Fail(path, std::strerror(errno));
  return {path, ReadAll(file.Get(), path)};
}

}  // namespace varno::solve
