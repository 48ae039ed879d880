#include "config/helper_library.h"

#include "text/text.h"

namespace pxscheduler {

std::wstring GetRegValue(const Registry& registry, const CodePage& ansi, RegistryRoot root,
                         const std::wstring& key, const std::wstring& value_name,
                         const std::wstring& default_value) {
  return ansi.RoundTrip(registry.Value(root, key, value_name).value_or(default_value));
}

Flag IsBlank(std::wstring_view text) {
  // The white space of the single-byte code pages; a no-break space does not make a text blank.
  return text.find_first_not_of(L" \t\n\v\f\r") == std::wstring_view::npos ? kTrue : kFalse;
}

std::wstring Stuff(const CodePage& ansi, std::wstring_view text, std::wstring_view placeholder,
                   std::wstring_view replacement) {
  return ReplaceAll(ansi.RoundTrip(std::wstring{text}), ansi.RoundTrip(std::wstring{placeholder}),
                    ansi.RoundTrip(std::wstring{replacement}));
}

std::wstring Parse(const CodePage& ansi, std::wstring_view text, std::wstring_view delimiter) {
  return ansi.RoundTrip(std::wstring{text.substr(0, text.find(delimiter))});
}

std::wstring Quote(const CodePage& ansi, std::wstring_view text) {
  return L"'" + ReplaceAll(ansi.RoundTrip(std::wstring{text}), L"'", L"''") + L"'";
}

std::wstring Qzpwd(const Passwords& passwords, const CodePage& ansi) {
  return ansi.RoundTrip(passwords.DatabasePassword());
}

std::wstring GetWindowsTempFolder(const System& system, const CodePage& ansi) {
  return ansi.RoundTrip(system.TemporaryFolder());
}

std::wstring Decrypt10(const Passwords& passwords, const CodePage& ansi, std::wstring_view text) {
  return ansi.RoundTrip(passwords.Decipher(ansi.RoundTrip(std::wstring{text})));
}

}  // namespace pxscheduler
