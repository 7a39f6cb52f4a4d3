#include "tests/varno/support/runtime_child.h"

#include <cstdio>
#include <cstdlib>
#include <iostream>
#include <memory>
#include <sys/wait.h>
#include <unistd.h>

namespace varno {

namespace {

struct Closer {
  void operator()(std::FILE* file) const { std::fclose(file); }
};
using File = std::unique_ptr<std::FILE, Closer>;

void Check(bool done, const char* what)
{
  if (done) return;
  std::perror(what);
  std::abort();
}

/// The readable end of a pipe that holds `text` and then ends. The text must fit into the pipe.
int PipeHolding(const std::string& text)
{
  int ends[2];
  Check(pipe(ends) == 0, "pipe");
  Check(write(ends[1], text.data(), text.size()) == static_cast<ssize_t>(text.size()), "write");
  close(ends[1]);
  return ends[0];
}

[[noreturn]] void BecomeChild(const std::function<void()>& body, int in, int out, int err) noexcept
{
  dup2(in, STDIN_FILENO);
  dup2(out, STDOUT_FILENO);
  dup2(err, STDERR_FILENO);
  body();
  std::cout.flush();
  std::fflush(nullptr);
  _exit(kBodyReturned);
}

std::string Contents(std::FILE* file)
{
  std::string text;
  std::rewind(file);
  for (int character = 0; (character = std::getc(file)) != EOF;) {
    text += static_cast<char>(character);
  }
  return text;
}

}  // namespace

ChildOutcome RunInChild(const std::function<void()>& body, const std::string& input)
{
  // What is buffered now would be written by both processes.
  std::cout.flush();
  std::fflush(nullptr);
  const File out(std::tmpfile());
  const File err(std::tmpfile());
  Check(out != nullptr && err != nullptr, "tmpfile");
  const int in = PipeHolding(input);

  const pid_t child = fork();
  Check(child >= 0, "fork");
  if (child == 0) BecomeChild(body, in, fileno(out.get()), fileno(err.get()));
  close(in);
  int status = 0;
  Check(waitpid(child, &status, 0) == child, "waitpid");

  ChildOutcome outcome;
  if (WIFEXITED(status)) outcome.exitStatus = WEXITSTATUS(status);
  if (WIFSIGNALED(status)) outcome.signal = WTERMSIG(status);
  outcome.out = Contents(out.get());
  outcome.err = Contents(err.get());
  return outcome;
}

}  // namespace varno
