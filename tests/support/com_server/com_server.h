#pragma once

#include <guiddef.h>

// The classes of the test server, known to those who register them and to the server itself.

namespace pxscheduler {

// How a test tells the server what to do, by environment variables.
inline constexpr wchar_t kComRecord[] = L"COM_SERVER_RECORD";  // the file that gets every call
// The file that holds the result sets, in UTF-8: for each a line "? " and the beginning of its
// statement, a line of column names, then rows; cells stand between tabs and name their type
// ("text:", "long:", "bool:", "date:", "money:", "null").
inline constexpr wchar_t kComRows[] = L"COM_SERVER_ROWS";
// A call, which of its occurrences (1-based), an HRESULT in hexadecimal, and the description:
// "Connection.Open 1 80004005 Login failed". Without a description no exception is described.
inline constexpr wchar_t kComFailure[] = L"COM_SERVER_FAILURE";

inline constexpr CLSID kConnectionClass{
    0x5b0e61c2, 0x3d94, 0x4f0a, {0x9a, 0x41, 0x7c, 0x10, 0x2e, 0x86, 0xd3, 0x01}};
inline constexpr CLSID kRecordsetClass{
    0x5b0e61c2, 0x3d94, 0x4f0a, {0x9a, 0x41, 0x7c, 0x10, 0x2e, 0x86, 0xd3, 0x02}};
inline constexpr CLSID kProviderClass{
    0x5b0e61c2, 0x3d94, 0x4f0a, {0x9a, 0x41, 0x7c, 0x10, 0x2e, 0x86, 0xd3, 0x03}};
inline constexpr CLSID kTextControlClass{
    0x5b0e61c2, 0x3d94, 0x4f0a, {0x9a, 0x41, 0x7c, 0x10, 0x2e, 0x86, 0xd3, 0x04}};

}  // namespace pxscheduler
