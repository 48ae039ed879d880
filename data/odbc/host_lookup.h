#pragma once

#include <chrono>
#include <string>
#include <vector>

#include "network/resolver.h"

namespace pxscheduler {

struct ResolvedHost {
  std::wstring name;
  std::vector<SocketAddress> addresses;  // at least one
};

// The addresses of a database server. Raises a provider failure (-2147467259) where the name is
// unknown, and where nothing has told its addresses when `time` is over.
ResolvedHost ResolveHost(Resolver& resolver, const std::wstring& name,
                         std::chrono::milliseconds time);

}  // namespace pxscheduler
