#include "data/odbc/host_lookup.h"

#include "data/odbc/provider_error.h"
#include "text/utf8.h"

namespace pxscheduler {

ResolvedHost ResolveHost(Resolver& resolver, const std::wstring& name,
                         std::chrono::milliseconds time) {
  ResolvedHost host{.name = name, .addresses = {}};
  switch (resolver.Resolve(ToUtf8(name), time, host.addresses)) {
    case ResolveResult::kUnknown:
      throw ProviderFailure(L"The server " + name + L" is unknown.");
    case ResolveResult::kTimedOut:
      throw ProviderFailure(L"Looking up the address of the server " + name + L" took too long.");
    case ResolveResult::kResolved:
      break;
  }
  return host;
}

}  // namespace pxscheduler
