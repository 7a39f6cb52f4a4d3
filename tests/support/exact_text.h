#pragma once

#include <string>

#include <gtest/gtest.h>

namespace support {

/// For EXPECT_EXIT: the whole standard error must be this text, to the byte.
inline testing::Matcher<const std::string&> ExactText(const std::string& text)
{
  return {text};
}

}  // namespace support
