#pragma once

#include <string_view>

#include "platform/dates/regional_settings.h"

namespace pxscheduler {

// The names of the calendar in the language of a locale ("en-US", "de-DE"); the English ones where
// ICU does not know the language.
CalendarNames IcuCalendarNames(std::wstring_view locale_name);

}  // namespace pxscheduler
