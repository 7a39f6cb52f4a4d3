#include "varno/solver/input_file.h"

#include <cstdlib>
#include <iostream>
#include <string>

#include <gtest/gtest.h>

#include "tests/support/exact_text.h"
#include "tests/support/temp_home.h"
#include "tests/varno/support/scoped_global.h"
#include "varno/parser/parse.h"

namespace varno {

using namespace support;

namespace {

/// Opens and parses a file, reports the result on standard error and ends the process.
[[noreturn]] void OpenAndParse(const std::string& file)
{
  OpenInput(file.c_str());
  std::cerr << (ParseInput() ? "accepted" : "rejected");
  for (const auto& [name, variable] : Expr::Global->_EQUATIONS) std::cerr << ' ' << name;
  std::exit(0);
}

class InputFile : public testing::Test {
 protected:
  const ScopedGlobal global;
  const TempHome folder;
};

const testing::ExitedWithCode kFails(1);
const testing::ExitedWithCode kSucceeds(0);

TEST_F(InputFile, IsReadByTheScanner)
{
  const std::string file = folder.Write("in.varno", "y' = 1;");
  EXPECT_EXIT(OpenAndParse(file), kSucceeds, ExactText("accepted y"));
}

TEST_F(InputFile, CanBeEmpty)
{
  const std::string file = folder.Write("empty", "");
  EXPECT_EXIT(OpenAndParse(file), kSucceeds,
              ExactText("#(ERR) ERROR: parse error \"\" at line #1\nrejected"));
}

TEST_F(InputFile, EndsTheRunWhenItCannotBeOpened)
{
  const std::string missing = folder.Folder() / "missing";
  for (const std::string& name : {missing, std::string()}) {
    EXPECT_EXIT(OpenInput(name.c_str()), kFails,
                ExactText("#(WARN) Error by opening input file: No such file or directory\n"));
  }
}

TEST_F(InputFile, EndsTheRunWhenItIsAFolder)
{
  EXPECT_EXIT(OpenInput(folder.Folder().c_str()), kFails,
              ExactText("#(WARN) Error by opening input file: Is a directory\n"));
}

}  // namespace
}  // namespace varno
