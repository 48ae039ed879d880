#include "letters/html/attribute_replacement.h"

#include <algorithm>

#include "text/ascii_case.h"

namespace pxscheduler {
namespace {

constexpr std::wstring_view kBlanks = L" \t\r\n\f";

// Reads tags and copies the document, with values replaced.
class AttributeReplacer {
 public:
  explicit AttributeReplacer(std::wstring_view html) : html_(html) {}

  template <typename Replace>
  std::wstring Copy(const Replace& replace) {
    for (at_ = html_.find(L'<'); at_ != std::wstring_view::npos; at_ = html_.find(L'<', at_)) {
      ++at_;
      if (at_ < html_.size() && IsAsciiLetter(html_[at_])) CopyTag(replace);
    }
    copy_ += html_.substr(copied_);
    return std::move(copy_);
  }

 private:
  std::wstring_view Take(std::wstring_view stops) {
    const std::size_t begin = at_;
    at_ = std::min(html_.find_first_of(stops, at_), html_.size());
    return html_.substr(begin, at_ - begin);
  }

  void SkipBlanks() { at_ = std::min(html_.find_first_not_of(kBlanks, at_), html_.size()); }

  bool At(wchar_t character) const { return at_ < html_.size() && html_[at_] == character; }

  template <typename Replace>
  void CopyTag(const Replace& replace) {
    const std::wstring tag = LowerAscii(Take(L" \t\r\n\f/>"));
    for (;;) {
      if (at_ == html_.size() || At(L'>')) return;
      const std::size_t begin = at_;
      const std::wstring name = LowerAscii(Take(L" \t\r\n\f/>="));
      SkipBlanks();
      if (!At(L'=')) {
        if (at_ == begin) ++at_;
        continue;
      }
      ++at_;
      SkipBlanks();
      const bool quoted = At(L'"') || At(L'\'');
      const wchar_t mark = quoted ? html_[at_] : L'"';
      const std::size_t outer_begin = at_;
      if (quoted) ++at_;
      const std::wstring_view value =
          quoted ? Take(std::wstring_view(&mark, 1)) : Take(L" \t\r\n\f>");
      if (quoted && at_ == html_.size()) return;  // it is never closed
      if (quoted) ++at_;
      const std::wstring replacement = replace(tag, name, value);
      if (replacement.empty()) continue;
      copy_ += html_.substr(copied_, outer_begin - copied_);
      copy_ += L'"' + replacement + L'"';
      copied_ = at_;
    }
  }

  std::wstring_view html_;
  std::size_t at_ = 0;
  std::size_t copied_ = 0;
  std::wstring copy_;
};

}  // namespace

void ReplaceAttributes(
    std::wstring& html,
    const std::function<std::wstring(std::wstring_view tag, std::wstring_view attribute,
                                     std::wstring_view value)>& replace) {
  html = AttributeReplacer(html).Copy(replace);
}

}  // namespace pxscheduler
