#pragma once

#include <string>
#include <utility>

#include "data/rows/session.h"
#include "platform/runtime_error.h"

namespace pxscheduler {

inline RuntimeError ProviderFailure(std::wstring description) {
  return {Session::kProviderFailure, std::move(description)};
}

}  // namespace pxscheduler
