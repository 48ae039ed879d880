#include "letters/component/rich_text_control.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <string_view>
#include <utility>

#include "letters/html/html_page.h"
#include "letters/html/html_text.h"
#include "letters/html/html_writer.h"
#include "letters/rtf/rtf_reader.h"
#include "platform/runtime_error.h"

namespace pxscheduler {
namespace {

// Documents beyond this are no templates, and positions in them would not fit the document model.
constexpr std::size_t kLargestDocument = std::size_t{1} << 30;

constexpr PageLayout kOwnPage = {11906, 16838, 1440, 1440, 1440, 1440};

std::int32_t PageLayout::*PageValue(int index) {
  static constexpr std::array<std::int32_t PageLayout::*, TextControl::kPageValues> kValues = {
      &PageLayout::width,      &PageLayout::height,       &PageLayout::left_margin,
      &PageLayout::top_margin, &PageLayout::right_margin, &PageLayout::bottom_margin};
  if (index < 0 || index >= TextControl::kPageValues) throw InvalidProcedureCall();
  return kValues.at(static_cast<std::size_t>(index));
}

bool HasControlCharacters(std::string_view bytes) {
  return std::ranges::any_of(bytes, [](char byte) {
    const auto code = static_cast<unsigned char>(byte);
    return (code < 0x20 && code != '\t' && code != '\n' && code != '\r' && code != '\f') ||
           code == 0x7F;
  });
}

bool BeginsWithMark(std::string_view bytes) {
  if (bytes.starts_with("\xEF\xBB\xBF")) bytes.remove_prefix(3);
  const std::size_t first = bytes.find_first_not_of(" \t\r\n");
  return first != std::string_view::npos && bytes[first] == '<';
}

std::wstring Explanation(PictureProblem problem) {
  switch (problem) {
    case PictureProblem::kMetafile:
      return L"left out: WMF or EMF, which mail programs do not show";
    case PictureProblem::kTooLarge:
      return L"left out: larger than 16 MB";
    case PictureProblem::kUnreadable:
      return L"left out: not PNG, JPEG or DIB, or damaged";
    case PictureProblem::kNotCropped:
      break;
  }
  return L"shown whole: not to be cropped, compressed in a rare way or damaged";
}

// One line for each kind of picture that the message cannot carry as the document has it.
void WarnOfPictures(const Document& document, const std::wstring& path, System& system) {
  for (const auto& [problem, count] : document.picture_problems)
    system.Warn(system.ShownPath(path) + L": " +
                (count == 1 ? L"a picture is " : std::to_wstring(count) + L" pictures are ") +
                Explanation(problem));
}

}  // namespace

RichTextControl::RichTextControl(System& system, const CodePages& code_pages,
                                 ConvertedFiles* converted)
    : system_(system), code_pages_(code_pages), converted_(converted), page_settings_(kOwnPage) {}

void RichTextControl::Load(const std::wstring& path, std::int16_t offset, std::int16_t) {
  const std::string bytes = system_.ReadFile(path);
  if (offset < 0 || bytes.size() < static_cast<std::size_t>(offset))
    throw InvalidFileFormat(system_.ShownPath(path) + L": shorter than its header");
  const std::string_view document =
      std::string_view(bytes).substr(static_cast<std::size_t>(offset));
  if (document.size() > kLargestDocument)
    throw InvalidFileFormat(system_.ShownPath(path) + L": too large");
  document_page_ = {};
  if (document.starts_with("{\\rtf")) {
    Document read = ReadRtf(document, code_pages_);
    WarnOfPictures(read, path, system_);
    document_page_ = read.page;
    document_ = std::move(read);
  } else if (BeginsWithMark(document)) {
    document_ = HtmlFile{std::string(document)};
  } else if (!HasControlCharacters(document)) {
    document_ = code_pages_.Ansi().FromBytes(document);
  } else {
    throw InvalidFileFormat(system_.ShownPath(path) + L": not a document of a known form");
  }
  path_ = path;
}

void RichTextControl::Save(const std::wstring& path, std::int16_t offset, std::int16_t format) {
  if (format != kFormatHtml || offset != 0) throw InvalidProcedureCall();
  std::string html;
  if (const auto* file = std::get_if<HtmlFile>(&document_))
    html = WithPageRule(file->bytes, document_page_);
  else if (const auto* document = std::get_if<Document>(&document_))
    html = WriteHtml(*document, document_page_);
  else
    html = HtmlOfText(std::get<std::wstring>(document_), document_page_);
  system_.ReplaceContent(path, html);
  if (converted_ != nullptr) converted_->Add(path, path_);
}

std::int32_t RichTextControl::DocumentPageValue(int index) const {
  return document_page_.*PageValue(index);
}

void RichTextControl::SetDocumentPageValue(int index, std::int32_t value) {
  document_page_.*PageValue(index) = value;
}

std::int32_t RichTextControl::PageSetting(int index) const {
  return page_settings_.*PageValue(index);
}

void RichTextControl::SetPageSetting(int index, std::int32_t value) {
  page_settings_.*PageValue(index) = value;
}

}  // namespace pxscheduler
