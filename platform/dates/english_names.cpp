#include "platform/dates/english_names.h"

namespace pxscheduler {

CalendarNames EnglishCalendarNames() {
  CalendarNames names;
  names.months = {L"January", L"February", L"March",     L"April",   L"May",      L"June",
                  L"July",    L"August",   L"September", L"October", L"November", L"December"};
  names.months_of_dates = names.months;
  names.short_months = {L"Jan", L"Feb", L"Mar", L"Apr", L"May", L"Jun",
                        L"Jul", L"Aug", L"Sep", L"Oct", L"Nov", L"Dec"};
  names.weekdays = {L"Sunday",   L"Monday", L"Tuesday", L"Wednesday",
                    L"Thursday", L"Friday", L"Saturday"};
  names.short_weekdays = {L"Sun", L"Mon", L"Tue", L"Wed", L"Thu", L"Fri", L"Sat"};
  return names;
}

}  // namespace pxscheduler
