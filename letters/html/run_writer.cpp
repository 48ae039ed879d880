#include "letters/html/run_writer.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <utility>

#include "letters/html/css.h"
#include "letters/html/html_text.h"
#include "letters/html/tab_line.h"
#include "letters/html/text_width.h"
#include "text/base64.h"
#include "text/utf8.h"

namespace pxscheduler {
namespace {

constexpr std::size_t kMostTabBlanks = 80;

// An element around text, and what ends it. Both are empty where none is needed.
struct Tag {
  std::string start;
  std::string end;
};

Tag ElementTag(const std::string& name, const Css& css) {
  return {"<" + name + css.Attribute() + ">", "</" + name + ">"};
}

Tag TagOf(const Document& document, const CharacterFormat& format, const CharacterFormat& around) {
  Css css;
  AddFont(document, format, around, css);
  AddDecoration(format, css);
  if (format.position == TextPosition::kSuperscript) return ElementTag("sup", css);
  if (format.position == TextPosition::kSubscript) return ElementTag("sub", css);
  if (css.Empty()) return {};
  // Where one thing alone differs there is a shorter element for it.
  CharacterFormat plain = format;
  const auto only = [&](bool CharacterFormat::*property) {
    if (!(format.*property) || around.*property) return false;
    plain = format;
    plain.*property = false;
    Css rest;
    AddFont(document, plain, around, rest);
    AddDecoration(plain, rest);
    return rest.Empty();
  };
  if (only(&CharacterFormat::bold)) return ElementTag("b", {});
  if (only(&CharacterFormat::italic)) return ElementTag("i", {});
  if (only(&CharacterFormat::underline)) return ElementTag("u", {});
  if (only(&CharacterFormat::strike)) return ElementTag("s", {});
  return ElementTag("span", css);
}

// A link's element is its text's formatting as well, so that mail programs do not underline and
// colour what the document does not.
Tag LinkTag(const Document& document, std::uint32_t link, const CharacterFormat& format,
            const CharacterFormat& around) {
  Css css;
  AddFont(document, format, around, css);
  if (format.colour == around.colour)
    css.Add("color", ColourName(format.colour == kAutomatic ? 0 : format.colour));
  if (!format.underline && !format.strike) css.Add("text-decoration", "none");
  AddDecoration(format, css);
  Tag tag{"<a href=\"", "</a>"};
  AppendEscaped(document.links[link - 1].address, tag.start);
  tag.start += "\"" + css.Attribute() + ">";
  return tag;
}

class RunWriter {
 public:
  RunWriter(const Document& document, const std::set<std::wstring>& linked_places,
            const ParagraphFormat& format, const CharacterFormat& around, std::string& html)
      : document_(document),
        linked_places_(linked_places),
        format_(format),
        around_(around),
        html_(html),
        position_(std::int64_t{format_.left_indent} + format_.first_indent) {}

  void Write(std::span<const Run> runs) {
    has_tabs_ = std::ranges::any_of(
        runs, [&](const Run& run) { return TextOf(run).find(L'\t') != std::wstring_view::npos; });
    for (const Run& run : runs) WriteRun(run);
    Close(element_);
    Close(link_element_);
  }

 private:
  std::wstring_view TextOf(const Run& run) const {
    return run.kind == Run::Kind::kText
               ? std::wstring_view(document_.text).substr(run.begin, run.length)
               : std::wstring_view();
  }

  void WriteRun(const Run& run) {
    if (run.kind == Run::Kind::kBookmark) {
      WriteBookmark(document_.bookmarks[run.begin]);
      return;
    }
    const CharacterFormat& format = document_.character_formats[run.format];
    if (run.link != link_) {
      Close(element_);
      Close(link_element_);
      link_ = run.link;
      if (link_ != 0) {
        Open(link_element_, LinkTag(document_, link_, format, around_));
        link_format_ = format;
      }
    }
    if (run.kind == Run::Kind::kPicture) {
      WritePicture(document_.pictures[run.begin]);
      return;
    }
    Tag tag = TagFor(format);
    if (tag.start != element_.start) {
      Close(element_);
      Open(element_, std::move(tag));
    }
    WriteText(TextOf(run), format);
  }

  Tag TagFor(const CharacterFormat& format) {
    if (link_ == 0) return TagOf(document_, format, around_);
    CharacterFormat difference = format;
    if (format == link_format_ && format.position == TextPosition::kBaseline) return {};
    // What the link's element says of its background and lines holds inside it.
    if (format.background == link_format_.background) difference.background = kAutomatic;
    difference.underline = format.underline && !link_format_.underline;
    difference.strike = format.strike && !link_format_.strike;
    return TagOf(document_, difference, link_format_);
  }

  void Open(Tag& element, Tag tag) {
    element = std::move(tag);
    html_ += element.start;
  }

  void Close(Tag& element) {
    html_ += element.end;
    element = {};
  }

  void WriteBookmark(const std::wstring& name) {
    if (!linked_places_.contains(name)) return;
    html_ += "<a name=\"";
    AppendEscaped(name, html_);
    html_ += "\"></a>";
  }

  void WritePicture(const Picture& picture) {
    html_ +=
        "<img src=\"data:" + picture.media_type + ";base64," + EncodeBase64(picture.bytes) + "\"";
    if (picture.width > 0) html_ += " width=\"" + Pixels(picture.width) + "\"";
    if (picture.height > 0) html_ += " height=\"" + Pixels(picture.height) + "\"";
    html_ += " alt=\"";
    AppendEscaped(picture.description, html_);
    html_ += R"(" border="0">)";
    position_ += picture.width;
    after_blank_ = false;
  }

  void WriteText(std::wstring_view text, const CharacterFormat& format) {
    std::size_t plain = 0;  // where the characters begin that need no change
    const auto flush = [&](std::size_t end) {
      AppendEscaped(text.substr(plain, end - plain), html_);
      plain = end + 1;
    };
    for (std::size_t i = 0; i < text.size(); ++i) {
      switch (text[i]) {
        case L'\n':
          flush(i);
          html_ += "<br>";
          position_ = format_.left_indent;
          after_blank_ = true;
          break;
        case L'\t':
          flush(i);
          WriteTab(format);
          break;
        case L' ':
          // A blank after another one, or at the start of a line, would not be seen.
          if (after_blank_) {
            flush(i);
            html_ += "&nbsp;";
          }
          after_blank_ = !after_blank_;
          if (has_tabs_) position_ += RoughWidth(L' ') * format.half_points / 10;
          break;
        default:
          if (has_tabs_) position_ += RoughWidth(text[i]) * format.half_points / 10;
          after_blank_ = false;
      }
    }
    flush(text.size());
  }

  // A tab as blanks, about as many as lead to the next stop.
  void WriteTab(const CharacterFormat& format) {
    std::int64_t stop = NextTabStop(document_, format_, position_).position;
    if (position_ < format_.left_indent) stop = std::min<std::int64_t>(stop, format_.left_indent);
    const std::int64_t blank = std::max<std::int64_t>(1, 25 * format.half_points / 10);
    const auto blanks = static_cast<std::size_t>((stop - position_ + blank / 2) / blank);
    for (std::size_t i = std::clamp<std::size_t>(blanks, 1, kMostTabBlanks); i > 0; --i)
      html_ += "&nbsp;";
    position_ = stop;
    after_blank_ = false;
  }

  const Document& document_;
  const std::set<std::wstring>& linked_places_;
  const ParagraphFormat& format_;
  const CharacterFormat& around_;
  std::string& html_;
  Tag element_;
  Tag link_element_;
  CharacterFormat link_format_;
  std::uint32_t link_ = 0;
  bool has_tabs_ = false;
  std::int64_t position_;    // on the line, from the left page margin, in twips
  bool after_blank_ = true;  // what comes next stands after a blank or at the start of a line
};

}  // namespace

std::set<std::wstring> LinkedPlaces(const Document& document) {
  std::set<std::wstring> places;
  for (const Link& link : document.links)
    if (link.address.starts_with(L'#')) places.insert(link.address.substr(1));
  return places;
}

void WriteRuns(const Document& document, const std::set<std::wstring>& linked_places,
               const ParagraphFormat& format, std::span<const Run> runs,
               const CharacterFormat& around, std::string& html) {
  RunWriter(document, linked_places, format, around, html).Write(runs);
}

}  // namespace pxscheduler
