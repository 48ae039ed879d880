#pragma once

#include <string>

#include "data/odbc/connection_text.h"

namespace pxscheduler {

struct Driver {
  std::wstring name;  // the path of a library, or the name of an installed driver
  Dialect dialect = Dialect::kFreeTds;

  friend bool operator==(const Driver&, const Driver&) = default;
};

// The driver that `wanted` names (the path of a library where it holds a "/", else the name of an
// installed driver), or the first of DefaultDrivers that is installed when `wanted` is empty.
// Raises a provider failure (-2147467259) that says what to install or to correct where there is
// none.
Driver FindDriver(const std::wstring& wanted);

// How a driver of this name, or with this path, reads a connection string.
Dialect DialectOf(const std::wstring& driver);

}  // namespace pxscheduler
