#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace pxscheduler {

// The lines of a registry export file: UTF-16LE after its byte order mark, else UTF-8 with or
// without one; lines end in CR LF or LF.
class ExportLines {
 public:
  // `file` names the file in errors. The bytes must outlive this object.
  ExportLines(std::string_view bytes, std::string file);

  // The next line without its end, false after the last. Raises InvalidFileFormat (321) for bytes
  // that are no text.
  bool Next(std::wstring& line);

  const std::string& File() const { return file_; }

  // Raises InvalidFileFormat (321) with the file, the number of the line that Next gave last and
  // what is wrong with it.
  [[noreturn]] void Fail(std::wstring_view reason) const;

 private:
  std::size_t LineEnd() const;

  std::string_view rest_;
  std::string file_;
  bool utf16_ = false;
  std::size_t number_ = 0;
};

}  // namespace pxscheduler
