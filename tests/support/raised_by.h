#pragma once

#include "platform/runtime_error.h"

namespace pxscheduler {

// The error that the action raises; its number is 0 where there is none.
template <typename Action>
RuntimeError RaisedBy(const Action& action) {
  try {
    action();
  } catch (const RuntimeError& error) {
    return error;
  }
  return {0, L"no error"};
}

}  // namespace pxscheduler
