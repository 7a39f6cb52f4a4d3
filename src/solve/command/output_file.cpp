#include "solve/command/output_file.h"

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <poll.h>
#include <unistd.h>
#include <utility>

namespace varno::solve {

namespace {

[[noreturn]] void FailFor(const std::string& name, int error)
{
  throw OutputError("cannot write " + name + ": " + std::strerror(error));
}

}  // namespace

OutputFile::OutputFile(FileDescriptor file, std::string name, std::function<bool()> interrupted)
    : file(std::move(file)), name(std::move(name)), interrupted(std::move(interrupted))
{}

OutputFile OutputFile::StandardOutput(std::function<bool()> interrupted)
{
  return {FileDescriptor(STDOUT_FILENO), "standard output", std::move(interrupted)};
}

OutputFile OutputFile::Open(const std::string& path, std::function<bool()> interrupted)
{
  constexpr mode_t kReadableAndWritable = 0666;  // as far as the umask allows
  const std::string name = "'" + path + "'";
  FileDescriptor file(
      ::open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, kReadableAndWritable));
  if (!file.IsOpen()) FailFor(name, errno);
  return {std::move(file), name, std::move(interrupted)};
}

OutputFile OutputFile::Continue(const std::string& path, std::int64_t bytes,
                                std::function<bool()> interrupted)
{
  const std::string name = "'" + path + "'";
  FileDescriptor file(::open(path.c_str(), O_WRONLY | O_CLOEXEC));
  if (!file.IsOpen()) FailFor(name, errno);
  const off_t length = ::lseek(file.Get(), 0, SEEK_END);
  if (length < 0) FailFor(name, errno);
  if (length < bytes) throw OutputError(name + " is shorter than what the state says was written");
  if (::ftruncate(file.Get(), bytes) != 0 || ::lseek(file.Get(), 0, SEEK_END) < 0)
    FailFor(name, errno);
  return {std::move(file), name, std::move(interrupted)};
}

void OutputFile::Write(std::string_view text)
{
  while (!text.empty()) text.remove_prefix(WriteSome(text));
}

std::size_t OutputFile::WriteSome(std::string_view text)
{
  const ssize_t count = ::write(file.Get(), text.data(), text.size());
  if (count >= 0) return static_cast<std::size_t>(count);
  switch (errno) {
    case EINTR:
      if (interrupted()) throw OutputInterrupted();
      return 0;
    case EAGAIN: {
      // Somebody who shares the terminal or the pipe has made it non-blocking.
      pollfd waiting = {file.Get(), POLLOUT, 0};
      ::poll(&waiting, 1, -1);
      if (interrupted()) throw OutputInterrupted();
      return 0;
    }
    case EPIPE:
      throw OutputClosed();
    default:
      Fail(errno);
  }
}

void OutputFile::Close()
{
  if (::close(file.Release()) != 0 && errno != EINTR) Fail(errno);
}

bool OutputFile::IsTerminal() const
{
  return ::isatty(file.Get()) != 0;
}

void OutputFile::Fail(int error) const
{
  FailFor(name, error);
}

}  // namespace varno::solve
