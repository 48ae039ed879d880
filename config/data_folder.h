#pragma once

#include <string>

#include "platform/code_page.h"
#include "platform/registry.h"
#include "platform/system.h"

namespace pxscheduler {

// Finds the folder of the run log, creates it where it is missing and returns it ending in "\".
// Raises ObjectRequired (424) whenever the "DataFolder" setting is not empty.
std::wstring GetDataFolder(System& system, const Registry& registry, const CodePage& ansi);

// Creates a folder and its missing parents. Never raises: System::Warn tells what could not be
// made.
void CreateFolder(System& system, const std::wstring& path);

}  // namespace pxscheduler
