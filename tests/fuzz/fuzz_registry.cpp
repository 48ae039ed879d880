#include <cstddef>
#include <cstdint>
#include <string_view>

#include "platform/linux/registry_export.h"
#include "platform/runtime_error.h"

// A malformed line is an error of its own kind, never anything else.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  pxscheduler::RegistryContent content;
  try {
    pxscheduler::ApplyRegistryExport({reinterpret_cast<const char*>(data), size}, "fuzz.reg",
                                     content);
  } catch (const pxscheduler::RuntimeError& error) {
    if (error.number != pxscheduler::InvalidFileFormat(L"").number) __builtin_trap();
  }
  return 0;
}
