#pragma once

#include "platform/dates/regional_settings.h"

namespace pxscheduler {

// What the user has set in the system's regional settings, without `today`.
RegionalSettings WindowsRegionalSettings();

}  // namespace pxscheduler
