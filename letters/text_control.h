#pragma once

#include <cstdint>
#include <string>

namespace pxscheduler {

// The rich-text component: it loads a word-processor document and saves it as HTML.
class TextControl {
 public:
  static constexpr int kFormatRichText = 3;
  static constexpr int kFormatHtml = 4;
  static constexpr int kPageValues = 6;  // width, height, left, top, right and bottom margin

  virtual ~TextControl() = default;

  // Loads the document that begins `offset` bytes into the file. Raises the errors of
  // System::ReadFile, or InvalidFileFormat (321) naming the file where it holds no document of a
  // known form.
  virtual void Load(const std::wstring& path, std::int16_t offset, std::int16_t format) = 0;
  // Writes the document over the file. Raises the errors of System::ReplaceContent.
  virtual void Save(const std::wstring& path, std::int16_t offset, std::int16_t format) = 0;

  // Page values in twentieths of a point, index 0 to 5 in the order above. The document's are those
  // recorded in the loaded document (0 where it records none) and written with a saved one; the
  // control's are its own settings.
  virtual std::int32_t DocumentPageValue(int index) const = 0;
  virtual void SetDocumentPageValue(int index, std::int32_t value) = 0;
  virtual std::int32_t PageSetting(int index) const = 0;
  virtual void SetPageSetting(int index, std::int32_t value) = 0;
};

}  // namespace pxscheduler
