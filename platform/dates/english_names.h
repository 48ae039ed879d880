#pragma once

#include "platform/dates/regional_settings.h"

namespace pxscheduler {

// The calendar in the English of the United States.
CalendarNames EnglishCalendarNames();

}  // namespace pxscheduler
