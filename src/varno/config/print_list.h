#pragma once

#include <string>

namespace varno {

/// Whether the lists of names in the settings, `_PRINTLIST` and `_NOPRINTLIST`, let the variable
/// into the output.
///
/// On purpose a list is searched for "NAME:" as it stands: a listed name also selects every name
/// that it ends with, as "xy2:" selects y2.
bool IsSelectedForPrint(const std::string& name);

}  // namespace varno
