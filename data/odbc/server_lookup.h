#pragma once

#include <chrono>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "network/resolver.h"

namespace pxscheduler {

// Both raise a provider failure (-2147467259) where they find nothing.

struct ResolvedHost {
  std::wstring name;
  std::vector<SocketAddress> addresses;  // at least one
};

// The addresses of a database server.
ResolvedHost ResolveHost(Resolver& resolver, const std::wstring& name,
                         std::chrono::milliseconds timeout);

inline constexpr std::uint16_t kSqlBrowserPort = 1434;

// The TCP port of a named instance, from the SQL Server Browser of its host ([MC-SQLR],
// CLNT_UCAST_INST). Every address of the host is asked, once a second until `timeout` is over.
std::uint16_t FindInstancePort(const ResolvedHost& host, const std::wstring& instance,
                               std::chrono::milliseconds timeout,
                               std::uint16_t browser_port = kSqlBrowserPort);

// The port in an answer of the browser (SVR_RESP), 0 where there is none.
std::uint16_t PortInBrowserAnswer(std::string_view answer);

}  // namespace pxscheduler
