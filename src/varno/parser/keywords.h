#pragma once

#include <string_view>

namespace varno {

/// The token of an identifier: that of the keyword it spells, otherwise NAME. Keywords are
/// case-sensitive.
int TokenOf(std::string_view identifier);

}  // namespace varno
