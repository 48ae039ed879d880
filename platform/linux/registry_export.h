#pragma once

#include <string>
#include <string_view>

#include "platform/linux/registry_content.h"

namespace pxscheduler {

// Applies the text that a registry export writes ("Windows Registry Editor Version 5.00", described
// in Microsoft's "How to add, modify, or delete registry subkeys and registry values by using a
// .reg file") to the content: keys, values, and deletions of either. No bytes at all change
// nothing. `file` names the file in errors.
// Raises InvalidFileFormat (321) for the first malformed line; the detail never quotes the line,
// which may hold a password.
void ApplyRegistryExport(std::string_view bytes, const std::string& file, RegistryContent& content);

}  // namespace pxscheduler
