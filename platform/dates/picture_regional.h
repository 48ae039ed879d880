#pragma once

#include <chrono>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/dates/date_order.h"
#include "platform/dates/date_words.h"
#include "platform/dates/picture.h"
#include "platform/dates/regional_settings.h"
#include "platform/regional.h"

namespace pxscheduler {

// Regional settings given by pictures and names, the same on every machine. Serves one thread.
class PictureRegional : public Regional {
 public:
  explicit PictureRegional(RegionalSettings settings);

  std::wstring ShortDate(std::chrono::sys_days date) const override;
  std::wstring LongTime(std::chrono::seconds time_of_day) const override;
  std::wstring ShortTime(std::chrono::seconds time_of_day) const override;
  std::wstring MonthName(unsigned month) const override;
  std::optional<DateTime> ReadDate(std::wstring_view text) const override;
  bool ReadsBackShortDates() const override { return reads_back_short_dates_; }

 private:
  const CalendarNames& Names() const;
  const DateWords& Words() const;

  RegionalSettings settings_;
  std::vector<PictureItem> short_date_;
  std::vector<PictureItem> long_time_;
  std::vector<PictureItem> short_time_;
  bool short_date_needs_names_;
  bool reads_back_short_dates_;
  DateOrder order_;
  wchar_t time_separator_;
  mutable std::optional<CalendarNames> names_;  // made when first needed
  mutable std::optional<DateWords> words_;      // likewise
};

}  // namespace pxscheduler
