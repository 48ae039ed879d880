#include "data/odbc/diagnostics.h"

#include <algorithm>
#include <array>
#include <string_view>

#include "data/odbc/wide_text.h"
#include "data/rows/session.h"
#include "text/utf8.h"

namespace pxscheduler {
namespace {

// "[FreeTDS][SQL Server]Invalid object name" without the names in front.
std::wstring WithoutVendors(std::wstring text) {
  std::size_t start = 0;
  while (start < text.size() && text[start] == L'[') {
    const std::size_t end = text.find(L']', start);
    if (end == std::wstring::npos) break;
    start = end + 1;
  }
  return text.substr(start);
}

std::wstring Described(const Diagnostic& diagnostic) {
  if (IsFromServer(diagnostic))
    return diagnostic.text + L" (SQL Server error " + std::to_wstring(diagnostic.native) + L")";
  std::wstring source = L" (SQLSTATE " + FromUtf8(diagnostic.state);
  if (diagnostic.native != 0) source += L", error " + std::to_wstring(diagnostic.native);
  return diagnostic.text + source + L")";
}

std::wstring Described(std::vector<Diagnostic> diagnostics) {
  if (diagnostics.empty()) return L"The ODBC driver failed without saying why.";
  std::stable_partition(diagnostics.begin(), diagnostics.end(),
                        [](const Diagnostic& each) { return !IsWarning(each); });
  std::wstring description;
  for (const Diagnostic& diagnostic : diagnostics) {
    if (!description.empty()) description += L' ';
    description += Described(diagnostic);
  }
  return description;
}

}  // namespace

std::vector<Diagnostic> ReadDiagnostics(SQLSMALLINT handle_type, SQLHANDLE handle) {
  std::vector<Diagnostic> diagnostics;
  std::vector<SQLWCHAR> text(1024);
  for (SQLSMALLINT record = 1; record < 100; ++record) {
    std::array<SQLWCHAR, SQL_SQLSTATE_SIZE + 1> state{};
    SQLINTEGER native = 0;
    SQLSMALLINT length = 0;
    const auto read = [&] {
      return SQLGetDiagRecW(handle_type, handle, record, state.data(), &native, text.data(),
                            static_cast<SQLSMALLINT>(text.size()), &length);
    };
    SQLRETURN result = read();
    if (result == SQL_SUCCESS_WITH_INFO && static_cast<std::size_t>(length) >= text.size()) {
      text.resize(static_cast<std::size_t>(length) + 1);
      result = read();
    }
    if (!SQL_SUCCEEDED(result)) break;
    const std::size_t held =
        std::min(static_cast<std::size_t>(std::max<SQLSMALLINT>(length, 0)), text.size() - 1);
    Diagnostic diagnostic{
        .state = {}, .native = native, .text = WithoutVendors(FromDriverText({text.data(), held}))};
    ToUtf8(std::span<const SQLWCHAR>(state).first(SQL_SQLSTATE_SIZE), diagnostic.state);
    diagnostics.push_back(std::move(diagnostic));
  }
  return diagnostics;
}

bool IsWarning(const Diagnostic& diagnostic) { return diagnostic.state.starts_with("01"); }

bool IsFromServer(const Diagnostic& diagnostic) {
  // The classes of warnings, of connections, and of the driver and its manager.
  constexpr std::array<std::string_view, 5> kOthers = {"01", "08", "HY", "IM", "S1"};
  return diagnostic.native != 0 && std::ranges::none_of(kOthers, [&](auto each) {
           return diagnostic.state.starts_with(each);
         });
}

RuntimeError StatementError(const std::vector<Diagnostic>& diagnostics) {
  const bool rejected = std::ranges::any_of(diagnostics, IsFromServer);
  return {rejected ? Session::kStatementRejected : Session::kProviderFailure,
          Described(diagnostics)};
}

RuntimeError ConnectError(const std::vector<Diagnostic>& diagnostics) {
  return ProviderFailure(Described(diagnostics));
}

}  // namespace pxscheduler
