#include "letters/html/inline_writer.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <map>
#include <utility>

#include "letters/html/tab_line.h"
#include "letters/html/text_width.h"
#include "text/base64.h"
#include "text/utf8.h"

namespace pxscheduler {
namespace {

constexpr std::size_t kMostTabBlanks = 80;

CharacterFormat FontOnly(const CharacterFormat& format) {
  CharacterFormat font;
  font.font = format.font;
  font.half_points = format.half_points;
  font.colour = format.colour;
  font.bold = format.bold;
  font.italic = format.italic;
  return font;
}

// An element around text, and what ends it. Both are empty where none is needed.
struct Tag {
  std::string start;
  std::string end;
};

void AddDecoration(const CharacterFormat& format, Css& css) {
  if (format.background != kAutomatic) css.Add("background-color", ColourName(format.background));
  if (format.underline || format.strike)
    css.Add("text-decoration", format.underline && format.strike ? "underline line-through"
                               : format.underline                ? "underline"
                                                                 : "line-through");
  if (format.small_capitals) css.Add("font-variant", "small-caps");
  if (format.capitals) css.Add("text-transform", "uppercase");
}

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
    return TagOf(document_, difference, FontOnly(link_format_));
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

void AppendEscaped(std::wstring_view text, std::string& html) {
  std::size_t plain = 0;
  for (std::size_t i = 0; i < text.size(); ++i) {
    const std::string_view entity = text[i] == L'&'        ? "&amp;"
                                    : text[i] == L'<'      ? "&lt;"
                                    : text[i] == L'>'      ? "&gt;"
                                    : text[i] == L'"'      ? "&quot;"
                                    : text[i] == L'\u00A0' ? "&nbsp;"
                                                           : "";
    if (entity.empty()) continue;
    AppendUtf8(text.substr(plain, i - plain), html);
    html += entity;
    plain = i + 1;
  }
  AppendUtf8(text.substr(plain), html);
}

CharacterFormat PrevailingFormat(const Document& document, const Paragraph& paragraph,
                                 const CharacterFormat& otherwise) {
  std::map<CharacterFormat, std::uint32_t> lengths;
  for (std::uint32_t i = 0; i < paragraph.run_count; ++i) {
    const Run& run = document.runs[paragraph.first_run + i];
    if (run.kind != Run::Kind::kText) continue;
    if (paragraph.run_count == 1) return FontOnly(document.character_formats[run.format]);
    lengths[FontOnly(document.character_formats[run.format])] += run.length;
  }
  if (lengths.empty()) return FontOnly(otherwise);
  return std::ranges::max_element(lengths, {}, [](const auto& each) { return each.second; })->first;
}

void AddFont(const Document& document, const CharacterFormat& format, const CharacterFormat& around,
             Css& css) {
  if (format.font != around.font) {
    const std::string families = FontFamilies(document.fonts[format.font]);
    if (!families.empty()) css.Add("font-family", families);
  }
  if (format.half_points != around.half_points)
    css.Add("font-size", Points(std::int64_t{format.half_points} * 10));
  if (format.colour != around.colour)
    css.Add("color", ColourName(format.colour == kAutomatic ? 0 : format.colour));
  if (format.bold != around.bold) css.Add("font-weight", format.bold ? "bold" : "normal");
  if (format.italic != around.italic) css.Add("font-style", format.italic ? "italic" : "normal");
}

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
