#include "solve/command/state_file.h"

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <sys/stat.h>

#include <gtest/gtest.h>

#include "solve/command/output_file.h"
#include "tests/solve/support/scratch_path.h"

namespace varno::solve {

namespace {

namespace fs = std::filesystem;

/// A folder that goes away.
class StateFile : public testing::Test {
 protected:
  StateFile() { fs::create_directories(folder); }

  const ScratchPath scratch;
  const fs::path folder = scratch.String();
  const std::string path = folder / "state";
};

SavedState Sample()
{
  SavedState state;
  state.options = {"--digits", "20", "--title", "a \"b\" \\ \n \xc3\xa4 \xff"};
  state.file = "-";
  state.inputs.equations = {"<stdin>", "y' = 1; // caf\xe9, caf\xc3\xa9\n"};
  state.inputs.sweepFiles = {{"a.csv", "a\n1\n"}, {"b.csv", ""}};
  state.rows = {1234567890123, 0xFFFFFFFFFFFFFFFFU};
  SweepState sweep;
  sweep.result = {7, 2, 1};
  sweep.current = 5;
  sweep.rowBytes = 99;
  sweep.hasHeader = true;
  sweep.rowsOfCurrent = {3, 4};
  sweep.waiting = {{8, "rows\n", ""}, {9, "", "message\n"}};
  state.sweep = sweep;
  return state;
}

std::string Message(const std::string& text)
{
  try {
    ParseState(text, "file");
  } catch (const InputFileError& error) {
    return error.what();
  }
  return "";
}

std::string Content(const std::string& path)
{
  std::ifstream file(path);
  return {std::istreambuf_iterator<char>(file), {}};
}

}  // namespace

TEST_F(StateFile, ComesBackAsItWas)
{
  const SavedState before = Sample(), after = ParseState(StateText(before), "file");
  EXPECT_EQ(before.options, after.options);
  EXPECT_EQ(before.file, after.file);
  EXPECT_EQ(before.inputs.equations.name, after.inputs.equations.name);
  EXPECT_EQ(before.inputs.equations.text, after.inputs.equations.text);
  ASSERT_EQ(2U, after.inputs.sweepFiles.size());
  EXPECT_EQ("a\n1\n", after.inputs.sweepFiles[0].text);
  EXPECT_EQ(before.rows, after.rows);
  ASSERT_TRUE(after.sweep);
  EXPECT_EQ(7, after.sweep->result.done);
  EXPECT_EQ(2, after.sweep->result.failed);
  EXPECT_EQ(1, after.sweep->result.wrong);
  EXPECT_EQ(5, after.sweep->current);
  EXPECT_EQ(99, after.sweep->rowBytes);
  EXPECT_TRUE(after.sweep->hasHeader);
  EXPECT_EQ(before.sweep->rowsOfCurrent, after.sweep->rowsOfCurrent);
  ASSERT_EQ(2U, after.sweep->waiting.size());
  EXPECT_EQ(8, after.sweep->waiting[0].run);
  EXPECT_EQ("rows\n", after.sweep->waiting[0].rows);
  EXPECT_EQ("message\n", after.sweep->waiting[1].messages);
}

TEST_F(StateFile, OfARunHasNoSweep)
{
  SavedState state = Sample();
  state.sweep.reset();
  EXPECT_FALSE(ParseState(StateText(state), "file").sweep);
}

TEST_F(StateFile, ForeignFilesAreRefused)
{
  for (const char* const text :
       {"", "y' = 1;", "{}", "[1, 2]", "7", "{\"varno-solve state\": \"x\"}"})
    EXPECT_EQ("cannot resume 'file': not a state of varno-solve", Message(text)) << text;
  EXPECT_EQ("cannot resume 'file': it is of another version",
            Message("{\"varno-solve state\": 99}"));
}

TEST_F(StateFile, AnyChangedByteIsNoticed)
{
  const std::string text = StateText(Sample());
  const auto end = text.find("\"varno-solve state\"");
  for (std::size_t i = 0; i < end; i += 7) {
    std::string changed = text;
    changed[i] = changed[i] == '1' ? '2' : '1';
    if (changed[i] != text[i] && text[i] != ' ' && text[i] != '\n') {
      EXPECT_NE("", Message(changed)) << i << text[i];
    }
  }
  EXPECT_NE("", Message(text.substr(0, text.size() / 2)));
}

TEST_F(StateFile, IsReplacedInOneGo)
{
  std::ofstream(path) << "old";
  WriteState(path, Sample());
  EXPECT_EQ(StateText(Sample()), Content(path));
  // Nothing else stays in the folder.
  EXPECT_EQ(1, std::distance(fs::directory_iterator(folder), fs::directory_iterator()));
}

TEST_F(StateFile, TellsWhyItCannotBeWritten)
{
  const std::string nowhere = folder / "missing" / "state";
  try {
    WriteState(nowhere, Sample());
    FAIL();
  } catch (const OutputError& error) {
    EXPECT_EQ("--save: cannot write '" + nowhere + "': No such file or directory",
              std::string(error.what()));
  }
}

TEST_F(StateFile, LinkStaysALink)
{
  const fs::path link = folder / "link";
  fs::create_directory(folder / "elsewhere");
  std::ofstream(folder / "elsewhere" / "state") << "old";
  fs::create_symlink(fs::path("elsewhere") / "state", link);
  WriteState(link, Sample());
  EXPECT_TRUE(fs::is_symlink(link));
  EXPECT_EQ(StateText(Sample()), Content(folder / "elsewhere" / "state"));
}

TEST_F(StateFile, PipeIsNotReplaced)
{
  ASSERT_EQ(0, mkfifo(path.c_str(), 0600));
  EXPECT_THROW(WriteState(path, Sample()), OutputError);
  EXPECT_TRUE(fs::is_fifo(path));
}

TEST_F(StateFile, OldOneStaysWhereTheNewOneCannotBeWritten)
{
  fs::create_directories(folder / "state" / "inside");  // nothing replaces a folder
  EXPECT_THROW(WriteState(path, Sample()), OutputError);
  EXPECT_EQ(1, std::distance(fs::directory_iterator(folder), fs::directory_iterator()));
}

}  // namespace varno::solve
