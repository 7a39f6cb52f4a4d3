#include "solve/plot/gnuplot.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <spawn.h>
#include <string_view>
#include <sys/wait.h>
#include <unistd.h>

namespace varno::solve {

namespace {

constexpr const char* kGnuplot = "gnuplot";

/// A file without a name, which the system removes.
class TemporaryFile {
 public:
  TemporaryFile() : file(std::tmpfile())
  {
    if (file == nullptr) Fail();
  }

  int Descriptor() const { return fileno(file.get()); }
  void Write(std::string_view text)
  {
    if (std::fwrite(text.data(), 1, text.size(), file.get()) != text.size() ||
        std::fflush(file.get()) != 0)
      Fail();
    std::rewind(file.get());
  }
  std::string Read()
  {
    std::rewind(file.get());
    std::string text;
    std::array<char, 4096> block;
    while (const std::size_t count = std::fread(block.data(), 1, block.size(), file.get()))
      text.append(block.data(), count);
    return text;
  }

 private:
  struct Close {
    void operator()(std::FILE* open) const { std::fclose(open); }
  };
  [[noreturn]] static void Fail()
  {
    throw PlotError(std::string("--plot: no temporary file: ") + std::strerror(errno));
  }

  std::unique_ptr<std::FILE, Close> file;
};

/// Starts gnuplot with its input, its output and its messages in these files; returns its process.
pid_t Start(int input, int output, int messages)
{
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_adddup2(&actions, input, STDIN_FILENO);
  posix_spawn_file_actions_adddup2(&actions, messages, STDERR_FILENO);
  posix_spawn_file_actions_adddup2(&actions, output, STDOUT_FILENO);
  char name[] = "gnuplot";
  char* const arguments[] = {name, nullptr};
  pid_t process = 0;
  const int error = posix_spawnp(&process, kGnuplot, &actions, nullptr, arguments, environ);
  posix_spawn_file_actions_destroy(&actions);
  if (error != 0)
    throw PlotError(std::string("--plot: cannot run gnuplot: ") + std::strerror(error));
  return process;
}

int WaitFor(pid_t process)
{
  int status = 0;
  while (waitpid(process, &status, 0) < 0) {
    if (errno != EINTR) return -1;
  }
  return status;
}

}  // namespace

void RequireGnuplot()
{
  const char* const path = std::getenv("PATH");
  std::string_view rest = path == nullptr ? "" : path;
  while (!rest.empty()) {
    const std::string folder(rest.substr(0, rest.find(':')));
    if (access((folder + "/" + kGnuplot).c_str(), X_OK) == 0) return;
    rest.remove_prefix(std::min(rest.size(), folder.size() + 1));
  }
  throw PlotError("--plot needs gnuplot, which is not there: on Debian, install gnuplot-nox");
}

std::string RunGnuplot(const std::string& script)
{
  TemporaryFile input, output, messages;
  input.Write(script);
  const int status = WaitFor(Start(input.Descriptor(), output.Descriptor(), messages.Descriptor()));
  const std::string said = messages.Read();
  if (status != 0)
    throw PlotError("--plot: gnuplot has failed" + (said.empty() ? "" : ":\n" + said));
  std::string picture = output.Read();
  std::erase(picture, '\f');  // what begins a new page on a printer
  return picture;
}

}  // namespace varno::solve
