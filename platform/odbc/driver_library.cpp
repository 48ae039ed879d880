#include "platform/odbc/driver_library.h"

#include <sql.h>
#include <sqlext.h>
#include <sqlucode.h>

#include <algorithm>
#include <array>
#include <filesystem>
#include <span>
#include <system_error>

#include "platform/code_page.h"
#include "platform/letter_case.h"
#include "platform/odbc/handles.h"
#include "platform/odbc/provider_error.h"
#include "platform/odbc/wide_text.h"

namespace pxscheduler {
namespace {

// Debian's folder for libraries of the architecture that the program is built for comes first.
constexpr std::array<const char*, 5> kFreeTdsLibraries = {
    "/usr/lib/" PXSCHEDULER_LIBRARY_ARCHITECTURE "/odbc/libtdsodbc.so",
    "/usr/lib/odbc/libtdsodbc.so",
    "/usr/lib64/libtdsodbc.so.0",
    "/usr/lib/libtdsodbc.so",
    "/usr/local/lib/libtdsodbc.so",
};

bool IsFile(const std::filesystem::path& path) {
  std::error_code ignored;
  return std::filesystem::is_regular_file(path, ignored);
}

// Whether the driver manager knows a driver by this name; names compare without case.
bool IsInstalled(const std::wstring& name) {
  const Environment environment;
  std::array<SQLWCHAR, 512> installed;
  std::array<SQLWCHAR, 2> no_attributes;
  SQLSMALLINT length = 0;
  SQLSMALLINT attributes_length = 0;
  SQLUSMALLINT direction = SQL_FETCH_FIRST;
  while (SQL_SUCCEEDED(SQLDriversW(environment.Get(), direction, installed.data(),
                                   static_cast<SQLSMALLINT>(installed.size()), &length,
                                   no_attributes.data(), 0, &attributes_length))) {
    const std::size_t held =
        std::min(static_cast<std::size_t>(std::max<SQLSMALLINT>(length, 0)), installed.size() - 1);
    if (LowerCase(FromDriverText(std::span(installed).first(held))) == LowerCase(name)) return true;
    direction = SQL_FETCH_NEXT;
  }
  return false;
}

Dialect DialectOf(const std::wstring& driver) {
  const std::wstring name = LowerCase(driver.substr(driver.rfind(L'/') + 1));
  return name.find(L"tds") == std::wstring::npos ? Dialect::kStandard : Dialect::kFreeTds;
}

}  // namespace

Driver FindDriver(const std::wstring& wanted) {
  if (!wanted.empty()) {
    const bool is_library = wanted.find(L'/') != std::wstring::npos;
    if (is_library ? !IsFile(ToUtf8(wanted)) : !IsInstalled(wanted)) {
      throw ProviderFailure(L"PXSCHEDULER_ODBC_DRIVER names the " +
                            std::wstring(is_library ? L"library " : L"driver ") + wanted +
                            L", which is not installed.");
    }
    return {wanted, DialectOf(wanted)};
  }
  for (const char* library : kFreeTdsLibraries) {
    if (IsFile(library)) return {FromUtf8(library), Dialect::kFreeTds};
  }
  throw ProviderFailure(
      L"There is no ODBC driver for SQL Server: install the package tdsodbc, or name a driver or "
      L"its library in PXSCHEDULER_ODBC_DRIVER.");
}

}  // namespace pxscheduler
