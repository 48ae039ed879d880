#include "data/odbc/driver_library.h"

#include <algorithm>
#include <array>
#include <filesystem>
#include <span>
#include <system_error>

#include "data/odbc/default_drivers.h"
#include "data/odbc/handles.h"
#include "data/odbc/wide_text.h"
#include "data/rows/session.h"
#include "platform/letter_case.h"
#include "text/utf8.h"

namespace pxscheduler {
namespace {

bool IsLibrary(const std::wstring& driver) { return driver.find(L'/') != std::wstring::npos; }

// Whether the driver manager knows a driver by this name; names compare without case.
bool IsRegistered(const std::wstring& name) {
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

bool IsInstalled(const std::wstring& driver) {
  if (!IsLibrary(driver)) return IsRegistered(driver);
  const std::string path = ToUtf8(driver);
  std::error_code ignored;
  return std::filesystem::is_regular_file(std::u8string(path.begin(), path.end()), ignored);
}

}  // namespace

Dialect DialectOf(const std::wstring& driver) {
  const std::wstring name = LowerCase(driver.substr(driver.rfind(L'/') + 1));
  if (name.find(L"tds") != std::wstring::npos) return Dialect::kFreeTds;
  return name == L"sql server" ? Dialect::kWindowsOwn : Dialect::kStandard;
}

Driver FindDriver(const std::wstring& wanted) {
  if (!wanted.empty()) {
    if (IsInstalled(wanted)) return {wanted, DialectOf(wanted)};
    throw ProviderFailure(L"PXSCHEDULER_ODBC_DRIVER names the " +
                          std::wstring(IsLibrary(wanted) ? L"library " : L"driver ") + wanted +
                          L", which is not installed.");
  }
  for (const std::wstring& driver : DefaultDrivers())
    if (IsInstalled(driver)) return {driver, DialectOf(driver)};
  throw ProviderFailure(L"There is no ODBC driver for SQL Server: install " + DriverToInstall() +
                        L", or name a driver in PXSCHEDULER_ODBC_DRIVER.");
}

}  // namespace pxscheduler
