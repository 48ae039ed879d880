#pragma once

#include <cstdint>
#include <string>
#include <variant>

#include "letters/converted_files.h"
#include "letters/rtf/document.h"
#include "letters/text_control.h"
#include "platform/code_page.h"
#include "platform/system.h"

namespace pxscheduler {

// A text control that needs no rich-text component: it loads a document that begins with "{\rtf" as
// RTF, one that begins with "<" as HTML and one without control characters as text in the ANSI code
// page, whatever format is asked for, and saves HTML alone. Its own page is A4 with margins of an
// inch.
class RichTextControl : public TextControl {
 public:
  // What is given must outlive the control. Each file that it saves is added to `converted`, if
  // that is given.
  RichTextControl(System& system, const CodePages& code_pages, ConvertedFiles* converted = nullptr);

  // Warns once (System::Warn) of each kind of picture that is left out or not shown as the document
  // has it.
  void Load(const std::wstring& path, std::int16_t offset, std::int16_t format) override;
  // Raises InvalidProcedureCall (5) for a format other than kFormatHtml or an offset other than 0.
  void Save(const std::wstring& path, std::int16_t offset, std::int16_t format) override;

  // An index outside 0 to 5 raises InvalidProcedureCall (5).
  std::int32_t DocumentPageValue(int index) const override;
  void SetDocumentPageValue(int index, std::int32_t value) override;
  std::int32_t PageSetting(int index) const override;
  void SetPageSetting(int index, std::int32_t value) override;

 private:
  struct HtmlFile {
    std::string bytes;  // as in the file
  };

  System& system_;
  const CodePages& code_pages_;
  ConvertedFiles* const converted_;
  std::wstring path_;  // of the loaded document
  std::variant<std::wstring, Document, HtmlFile> document_;
  PageLayout document_page_;
  PageLayout page_settings_;
};

}  // namespace pxscheduler
