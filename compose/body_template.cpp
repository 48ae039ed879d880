#include "compose/body_template.h"

#include <utility>

#include "config/helper_library.h"
#include "platform/letter_case.h"
#include "platform/runtime_error.h"
#include "text/text.h"

namespace pxscheduler {
namespace {

constexpr std::int16_t kTemplateHeaderBytes = 30;  // never interpreted
constexpr std::size_t kExtensionLength = 4;

bool IsTemplate(const std::wstring& path) {
  return path.size() >= kExtensionLength &&
         LowerCase(std::wstring_view{path}.substr(path.size() - kExtensionLength)) == L".qzw";
}

struct ConvertedFile {
  std::wstring path;  // the same in every run
  std::unique_ptr<FolderLock> lock;
};

ConvertedFile ConvertToHtml(System& system, const CodePage& ansi, TextControl& text_control,
                            const std::wstring& template_path) {
  text_control.Load(template_path, kTemplateHeaderBytes, TextControl::kFormatRichText);
  for (int index = 0; index < TextControl::kPageValues; ++index) {
    const std::int32_t recorded = text_control.DocumentPageValue(index);
    if (recorded > 0) text_control.SetPageSetting(index, recorded);
  }
  const std::wstring folder = GetWindowsTempFolder(system, ansi);
  std::wstring html_path = folder + L"scheduler.htm";
  for (int index = 0; index < TextControl::kPageValues; ++index)
    text_control.SetDocumentPageValue(index, text_control.PageSetting(index));
  std::unique_ptr<FolderLock> lock = system.LockFolder(folder);
  text_control.Save(html_path, 0, TextControl::kFormatHtml);
  return {std::move(html_path), std::move(lock)};
}

void WarnOfMissingLetter(System& system, const std::wstring& path) {
  bool exists = true;
  try {
    exists = !system.FirstEntry(path).empty();
  } catch (const RuntimeError&) {
    // There is something that cannot be examined.
  }
  std::wstring line = L"The letter " + system.ShownPath(path) +
                      (exists ? L" cannot be read" : L" does not exist") +
                      L": every client gets an empty message.";
  if (path.starts_with(L'"'))
    line += L" The quotation marks behind \"/F\" count as part of its name.";
  system.Warn(line);
}

}  // namespace

BodyTexts PrepareMessageBody(System& system, const CodePage& ansi,
                             const std::function<std::unique_ptr<TextControl>()>& new_text_control,
                             MailComponent& mail, const std::wstring& body_file) {
  {
    const ConvertedFile file = IsTemplate(body_file)
                                   ? ConvertToHtml(system, ansi, *new_text_control(), body_file)
                                   : ConvertedFile{body_file, nullptr};
    if (mail.LoadBodyFromFile(file.path, MailComponent::kBodyAndAlternative) != 0)
      WarnOfMissingLetter(system, file.path);
  }
  BodyTexts texts{mail.BodyText(), mail.AlternativeBodyText()};
  if (IsHtmlDocument(texts.body)) mail.SetHtml(1);
  return texts;
}

}  // namespace pxscheduler
