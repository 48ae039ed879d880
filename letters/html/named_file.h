#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace pxscheduler {

// A file that an address in an HTML document names, "/" between the steps of its path.
struct NamedFile {
  std::wstring path;  // from a root where `absolute`, else from the document's folder
  bool absolute;
};

// What a relative address, a "file:" address or a path with a drive names, without percent-encoding
// (RFC 3986, UTF-8); nothing for the address of anything else.
std::optional<NamedFile> FileOfAddress(std::wstring_view address);

// The path of a named file as the system takes it. Nothing where the name leads out of `folder`,
// which is "" or ends in a separator. Links are not looked at.
std::optional<std::wstring> PathInFolder(const NamedFile& file, const std::wstring& folder);

// Whether `text` begins with `lower`, which has no capitals; only ASCII letters are compared
// without case.
bool StartsWithoutCase(std::wstring_view text, std::wstring_view lower);

}  // namespace pxscheduler
