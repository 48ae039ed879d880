#pragma once

#include <memory>
#include <string>
#include <string_view>

namespace pxscheduler {

// One character encoding. Conversions never fail: a character that the encoding lacks becomes "?",
// bytes that stand for nothing become U+FFFD.
class CodePage {
 public:
  virtual ~CodePage() = default;

  virtual std::string ToBytes(std::wstring_view text) const = 0;
  virtual std::wstring FromBytes(std::string_view bytes) const = 0;

  // FromBytes(ToBytes(text)): what is left of a text that crossed an interface of this encoding.
  // Applying it twice gives the same as applying it once.
  virtual std::wstring RoundTrip(std::wstring text) const = 0;
};

// The encodings that documents and files may be written in.
class CodePages {
 public:
  virtual ~CodePages() = default;

  // The machine's ANSI code page. Lives as long as this object.
  virtual const CodePage& Ansi() const = 0;

  // By IANA name ("iso-8859-2", "UTF-8") or by Windows number ("windows-1250", "cp932"); compared
  // without case. Null for an encoding that the machine does not know.
  virtual std::unique_ptr<CodePage> Find(std::string_view name) const = 0;
};

}  // namespace pxscheduler
