// Runs one query on a SQL Server and sorts its result by address, as a run does, and tells the time
// and the memory above that of the open session. bench/sql_server.py starts it.
//
// Usage: bench_sql_server_fetch DATA_SOURCE SQL

#include <sys/resource.h>

#include <chrono>
#include <cstdio>
#include <fstream>
#include <string>

#include "data/odbc/sql_server_session.h"
#include "text/utf8.h"

namespace pxscheduler {
namespace {

using Seconds = std::chrono::duration<double>;

// A line of /proc/self/status in bytes, for instance "VmHWM", the peak of what was resident.
double StatusBytes(const std::string& name) {
  std::ifstream status("/proc/self/status");
  for (std::string line; std::getline(status, line);)
    if (line.starts_with(name + ':')) return std::stod(line.substr(name.size() + 1)) * 1024;
  return 0;
}

double CpuSeconds() {
  rusage usage{};
  getrusage(RUSAGE_SELF, &usage);
  const auto seconds = [](const timeval& time) {
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) / 1e6;
  };
  return seconds(usage.ru_utime) + seconds(usage.ru_stime);
}

void Measure(const std::wstring& data_source, const std::wstring& sql) {
  const auto session = OpenSqlServerSession({}, {.provider = L"SQLOLEDB",
                                                 .user_id = L"appuser",
                                                 .password = L"tonal",
                                                 .initial_catalog = L"SampleAgency",
                                                 .data_source = data_source});
  const double base = StatusBytes("VmRSS");
  const double cpu = CpuSeconds();
  const auto start = std::chrono::steady_clock::now();
  RowStore rows = session->Query(sql);
  const Seconds fetch = std::chrono::steady_clock::now() - start;
  const double fetch_cpu = CpuSeconds() - cpu;
  const double held = StatusBytes("VmHWM") - base;
  const auto sort_start = std::chrono::steady_clock::now();
  rows.Sort(rows.FindColumn(L"Email").value_or(0));
  const Seconds sort = std::chrono::steady_clock::now() - sort_start;
  std::printf("%zu %.3f %.3f %.3f %.0f %.0f\n", rows.RowCount(), fetch.count(), fetch_cpu,
              sort.count(), held, StatusBytes("VmHWM") - base);
}

}  // namespace
}  // namespace pxscheduler

int main(int argument_count, char** arguments) {
  if (argument_count != 3) return 2;
  try {
    pxscheduler::Measure(pxscheduler::FromUtf8(arguments[1]), pxscheduler::FromUtf8(arguments[2]));
    return 0;
  } catch (const pxscheduler::RuntimeError& error) {
    std::fprintf(stderr, "%s\n", pxscheduler::ToUtf8(error.description).c_str());
    return 1;
  }
}
