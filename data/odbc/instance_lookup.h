#pragma once

#include <chrono>
#include <cstdint>
#include <string>
#include <string_view>

#include "data/odbc/host_lookup.h"

namespace pxscheduler {

inline constexpr std::uint16_t kSqlBrowserPort = 1434;

// The TCP port of a named instance, as the SQL Server Browser of its host tells it ([MC-SQLR],
// CLNT_UCAST_INST). Every address of the host is asked, once a second until `timeout` is over.
// Raises a provider failure (-2147467259) where nobody answers, or the answer holds no TCP port.
std::uint16_t FindInstancePort(const ResolvedHost& host, const std::wstring& instance,
                               std::chrono::milliseconds timeout,
                               std::uint16_t browser_port = kSqlBrowserPort);

// The port in an answer of the browser (SVR_RESP), 0 where it holds none.
std::uint16_t PortInBrowserAnswer(std::string_view answer);

}  // namespace pxscheduler
