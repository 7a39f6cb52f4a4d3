#include "solve/command/output_file.h"

#include <csignal>
#include <fcntl.h>
#include <fstream>
#include <sstream>
#include <string>
#include <sys/stat.h>
#include <sys/time.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include "tests/solve/support/scratch_path.h"

namespace varno::solve {

namespace {

bool Never()
{
  return false;
}

std::string Contents(const std::string& path)
{
  std::ostringstream text;
  text << std::ifstream(path).rdbuf();
  return text.str();
}

}  // namespace

TEST(OutputFile, ReplacesAndWritesAtOnce)
{
  const ScratchPath scratch;
  const std::string& path = scratch.String();
  std::ofstream(path) << "what was there before";
  OutputFile file = OutputFile::Open(path, Never);
  EXPECT_EQ(Contents(path), "");
  file.Write("one\n");
  EXPECT_EQ(Contents(path), "one\n");
  file.Write("two\n");
  file.Close();
  EXPECT_EQ(Contents(path), "one\ntwo\n");
}

TEST(OutputFile, NamesWhatCannotBeOpened)
{
  try {
    OutputFile::Open("/nowhere/rows", Never);
    FAIL();
  } catch (const OutputError& error) {
    EXPECT_STREQ(error.what(), "cannot write '/nowhere/rows': No such file or directory");
  }
}

TEST(OutputFile, FullDisk)
{
  OutputFile file = OutputFile::Open("/dev/full", Never);
  EXPECT_NO_THROW(file.Write(""));
  EXPECT_THROW(file.Write("row\n"), OutputError);
}

TEST(OutputFile, ClosedPipe)
{
  const ScratchPath scratch;
  const std::string& path = scratch.String();
  ASSERT_EQ(mkfifo(path.c_str(), 0600), 0);
  const int reader = open(path.c_str(), O_RDONLY | O_NONBLOCK);
  OutputFile file = OutputFile::Open(path, Never);
  file.Write("row\n");
  close(reader);
  const auto old = std::signal(SIGPIPE, SIG_IGN);
  EXPECT_THROW(file.Write("row\n"), OutputClosed);
  std::signal(SIGPIPE, old);
}

TEST(OutputFile, IsNoTerminal)
{
  EXPECT_FALSE(OutputFile::Open("/dev/null", Never).IsTerminal());
}

TEST(OutputFile, WaitingForAReaderCanBeInterrupted)
{
  const ScratchPath scratch;
  const std::string& path = scratch.String();
  ASSERT_EQ(mkfifo(path.c_str(), 0600), 0);
  const int reader = open(path.c_str(), O_RDONLY | O_NONBLOCK);

  // A signal handler that does nothing but break off the write that waits.
  struct sigaction action = {}, old = {};
  action.sa_handler = [](int) {};
  sigaction(SIGALRM, &action, &old);
  {
    OutputFile file = OutputFile::Open(path, [] { return true; });
    const std::string block(1 << 20, 'x');  // more than a pipe holds
    itimerval often = {{0, 1000}, {0, 1000}};
    setitimer(ITIMER_REAL, &often, nullptr);
    EXPECT_THROW(
        {
          for (;;) file.Write(block);
        },
        OutputInterrupted);
    often = {};
    setitimer(ITIMER_REAL, &often, nullptr);
  }
  sigaction(SIGALRM, &old, nullptr);
  close(reader);
}

}  // namespace varno::solve
