#include "solve/command/input_file.h"

#include <fstream>
#include <string>

#include <gtest/gtest.h>

#include "tests/solve/support/scratch_path.h"

namespace varno::solve {

namespace {

class InputFileTest : public testing::Test {
 protected:
  void Write(const std::string& bytes) { std::ofstream(path, std::ios::binary) << bytes; }
  std::string Error() const
  {
    try {
      ReadInputFile(path);
    } catch (const InputFileError& error) {
      return error.what();
    }
    return "no error";
  }

  const ScratchPath scratch;
  const std::string& path = scratch.String();
};

}  // namespace

TEST_F(InputFileTest, AllBytesAndTheName)
{
  std::string bytes = "x' = 1;\r\n\xff";
  bytes += std::string(300'000, 'y');  // several blocks
  Write(bytes);
  const InputFile input = ReadInputFile(path);
  EXPECT_EQ(input.name, path);
  EXPECT_EQ(input.text, bytes);
}

TEST_F(InputFileTest, EmptyFile)
{
  Write("");
  EXPECT_EQ(ReadInputFile(path).text, "");
}

TEST_F(InputFileTest, MissingFile)
{
  EXPECT_EQ(Error(), "cannot read '" + path + "': No such file or directory");
}

TEST_F(InputFileTest, ZeroByteIsNamedByItsOffset)
{
  std::string bytes(100'000, ' ');
  bytes[99'999] = '\0';
  Write(bytes);
  EXPECT_EQ(Error(), "cannot read '" + path + "': not a text: the byte at offset 99999 is 0");
}

TEST_F(InputFileTest, MoreThan256MiBAreNoEquations)
{
  {
    std::ofstream file(path, std::ios::binary);
    const std::string block(1 << 20, ' ');
    for (int i = 0; i < 257; ++i) file << block;
  }
  EXPECT_EQ(Error(), "cannot read '" + path + "': larger than 256 MiB");
}

}  // namespace varno::solve
