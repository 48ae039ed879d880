#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "platform/code_page.h"
#include "platform/passwords.h"
#include "platform/registry.h"
#include "platform/system.h"

namespace pxscheduler {

// The eight operations of the product's system library that the tool calls. Text crosses that
// library's interface in the ANSI code page, so what the code page lacks comes back as "?" from
// every operation that returns text. None of them reports an error.

// 16-bit truth values: all bits set, so that a bitwise not of one is the other.
using Flag = std::int16_t;
inline constexpr Flag kTrue = -1;
inline constexpr Flag kFalse = 0;

// The product's key under HKEY_LOCAL_MACHINE and HKEY_CURRENT_USER.
inline constexpr wchar_t kProductKey[] = L"Software\\Kestrova\\Orbalis";

// The text stored at root\key\value_name, or the default where there is none.
std::wstring GetRegValue(const Registry& registry, const CodePage& ansi, RegistryRoot root,
                         const std::wstring& key, const std::wstring& value_name,
                         const std::wstring& default_value);

// kTrue for a text that is empty or holds nothing but white space.
Flag IsBlank(std::wstring_view text);

// The text with every occurrence of the placeholder replaced: letter case counts, left to right,
// and what was inserted is not looked at again.
std::wstring Stuff(const CodePage& ansi, std::wstring_view text, std::wstring_view placeholder,
                   std::wstring_view replacement);

// What stands before the first delimiter, the whole text where there is none.
std::wstring Parse(const CodePage& ansi, std::wstring_view text, std::wstring_view delimiter);

// The text as an SQL string literal, its quotation marks doubled: O'Brien gives 'O''Brien'.
std::wstring Quote(const CodePage& ansi, std::wstring_view text);

// The password of the database login "appuser".
std::wstring Qzpwd(const Passwords& passwords, const CodePage& ansi);

// The folder for temporary files, ending in "\".
std::wstring GetWindowsTempFolder(const System& system, const CodePage& ansi);

// The clear text of a password that the product stores enciphered.
std::wstring Decrypt10(const Passwords& passwords, const CodePage& ansi, std::wstring_view text);

}  // namespace pxscheduler
