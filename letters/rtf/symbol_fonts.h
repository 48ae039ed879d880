#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace pxscheduler {

enum class SymbolSet : std::uint8_t { kNone, kSymbol, kWingdings };

// Which symbols a font shows in place of letters. `symbol_charset`: its table entry says that it
// has a character set of its own.
SymbolSet SymbolSetOf(std::wstring_view font_name, bool symbol_charset);

// The Unicode text of one byte in such a font; a bullet for a symbol that Unicode lacks.
std::wstring SymbolText(SymbolSet symbols, unsigned char byte);

}  // namespace pxscheduler
