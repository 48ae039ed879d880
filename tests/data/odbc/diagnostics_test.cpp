#include "data/odbc/diagnostics.h"

#include <gtest/gtest.h>

#include "text/utf8.h"

namespace pxscheduler {
namespace {

TEST(DiagnosticsTest, TellWhoFailedAndWhy) {
  const Diagnostic changed{"01000", 5701, L"Changed database."};
  const Diagnostic syntax{"42000", 102, L"Incorrect syntax."};
  const Diagnostic divide{"22012", 8134, L"Divide by zero."};
  const Diagnostic timeout{"HYT00", 20003, L"Timeout expired"};
  const Diagnostic lost{"08S01", 20006, L"Write to the server failed"};
  const Diagnostic no_driver{"IM002", 0, L"No driver"};
  const Diagnostic no_number{"42000", 0, L"Not from a server."};
  const struct {
    std::vector<Diagnostic> diagnostics;
    std::int32_t number;
    std::wstring description;
  } cases[] = {
      {{syntax}, -2147217900, L"Incorrect syntax. (SQL Server error 102)"},
      {{changed, syntax, divide},
       -2147217900,
       L"Incorrect syntax. (SQL Server error 102) Divide by zero. (SQL Server error 8134) "
       L"Changed database. (SQLSTATE 01000, error 5701)"},
      {{timeout, lost},
       -2147467259,
       L"Timeout expired (SQLSTATE HYT00, error 20003) "
       L"Write to the server failed (SQLSTATE 08S01, error 20006)"},
      {{no_driver}, -2147467259, L"No driver (SQLSTATE IM002)"},
      {{no_number}, -2147467259, L"Not from a server. (SQLSTATE 42000)"},
      {{}, -2147467259, L"The ODBC driver failed without saying why."},
  };
  for (const auto& [diagnostics, number, description] : cases) {
    const RuntimeError error = StatementError(diagnostics);
    EXPECT_EQ(error.number, number) << ToUtf8(description);
    EXPECT_EQ(error.description, description) << ToUtf8(error.description);
    EXPECT_EQ(ConnectError(diagnostics).number, -2147467259);
  }
}

}  // namespace
}  // namespace pxscheduler
