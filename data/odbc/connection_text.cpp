#include "data/odbc/connection_text.h"

#include "data/rows/session.h"
#include "text/text.h"

namespace pxscheduler {
namespace {

bool Contains(std::wstring_view text, wchar_t character) {
  return text.find(character) != std::wstring_view::npos;
}

// The driver manager and the drivers disagree on the end of a value that holds both "}" and ";":
// one of them would read the rest as a keyword.
void CheckExpressible(const wchar_t* what, std::wstring_view value) {
  bool expressible = !(Contains(value, L'}') && Contains(value, L';'));
  for (const wchar_t character : value)
    expressible = expressible && character >= L' ' && character != 0x7F;
  if (!expressible) {
    throw ProviderFailure(std::wstring(L"The ") + what +
                          L" holds characters that an ODBC connection string cannot carry.");
  }
}

std::wstring Braced(std::wstring_view value) {
  return L'{' + ReplaceAll(value, L"}", L"}}") + L'}';
}

std::wstring Quoted(Dialect dialect, std::wstring_view value) {
  const bool plain = !value.empty() && value.front() != L'{' && !Contains(value, L';') &&
                     TrimBlanks(value) == value;
  if (plain && (dialect == Dialect::kFreeTds || !Contains(value, L'}'))) return std::wstring(value);
  if (value.empty()) return {};
  return dialect == Dialect::kFreeTds ? L'{' + std::wstring(value) + L'}' : Braced(value);
}

}  // namespace

std::wstring ConnectionText(const OdbcSettings& settings) {
  std::wstring text;
  const auto add = [&](const wchar_t* keyword, const wchar_t* what, const std::wstring& value) {
    CheckExpressible(what, value);
    text.append(keyword).append(1, L'=').append(Quoted(settings.dialect, value)).append(1, L';');
  };
  const bool is_free_tds = settings.dialect == Dialect::kFreeTds;
  const std::wstring server = settings.host + L',' + std::to_wstring(settings.port);
  CheckExpressible(L"name of the driver", settings.driver);
  text.append(L"DRIVER=");
  text.append(is_free_tds ? Quoted(settings.dialect, settings.driver) : Braced(settings.driver));
  text += L';';
  // The others would try shared memory and named pipes first.
  add(L"SERVER", L"name of the server", is_free_tds ? server : L"tcp:" + server);
  add(L"UID", L"user name", settings.user_id);
  add(L"PWD", L"password", settings.password);
  if (!settings.database.empty()) add(L"DATABASE", L"name of the database", settings.database);
  text += L"APP=PXScheduler;";
  const bool whole_session = settings.encryption == Encryption::kWholeSession;
  if (is_free_tds) {
    // Without a version this driver ignores the login time-out; without a character set it converts
    // every text to ISO 8859-1.
    text += L"TDS_Version=7.4;ClientCharset=UTF-8;Encryption=";
    text += whole_session ? L"require;" : L"request;";
  } else if (settings.dialect == Dialect::kStandard) {
    text += whole_session ? L"Encrypt=yes;TrustServerCertificate=yes;" : L"Encrypt=no;";
  }
  return text;
}

}  // namespace pxscheduler
