#pragma once

#include <cstddef>
#include <string>

#include "platform/code_page.h"
#include "platform/regional.h"
#include "platform/system.h"

namespace pxscheduler {

// Where an expansion stands. A macro that gives no end date leaves the one of the macro before it
// in force, so both dates travel from step to step, as texts in the locale's short date form.
struct DateMacroExpansion {
  std::wstring text;
  std::wstring start_date;
  std::wstring end_date;
  std::size_t slot = 0;  // 0-based; the macro of the table that is looked for next
};

// The saved query's SQL text with every date and anniversary macro resolved against today's date.
// Never returns for a text with a date macro that neither begins it nor follows one of the six
// columns that macros are written for, which System::Warn tells. Raises TypeMismatch (13) for a
// single-date macro after a birthday or anniversary column when no macro before it gave an end
// date.
std::wstring ExpandDateMacros(System& system, const Regional& regional, const CodePage& ansi,
                              const std::wstring& sql);

// One step of the expansion: finds the next date macro, computes its dates and replaces it. False,
// with nothing changed but the slot, when no macro is left. A macro that cannot be replaced stays
// where it is and is found again by the next step.
bool ExpandNextDateMacro(const System& system, const Regional& regional, const CodePage& ansi,
                         DateMacroExpansion& expansion);

// The anniversary macros "[1]", "[5]", "[10]" to "[75]" as conditions for the server to evaluate.
std::wstring ExpandAnniversaryMacros(const CodePage& ansi, std::wstring text);

}  // namespace pxscheduler
