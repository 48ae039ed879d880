#include "platform/html/plain_text.h"

#include <algorithm>
#include <cstddef>
#include <cwchar>
#include <initializer_list>
#include <optional>
#include <utility>
#include <vector>

#include "platform/html/bracket_token.h"
#include "platform/html/html_parser.h"
#include "platform/html/inline_style.h"
#include "platform/html/list_marker.h"
#include "platform/html/text_layout.h"

namespace pxscheduler {
namespace {

constexpr std::size_t kWidth = 78;
constexpr std::size_t kDeepestIndent = 40;
constexpr std::size_t kDeepestTable = 8;
constexpr int kMostBlankLines = 2;

bool IsOneOf(std::string_view name, std::initializer_list<std::string_view> names) {
  return std::ranges::find(names, name) != names.end();
}

bool IsHeading(std::string_view name) {
  return name.size() == 2 && name[0] == 'h' && name[1] >= '1' && name[1] <= '6';
}

bool IsUnseen(std::string_view name) {
  return IsOneOf(name, {"head", "title", "script", "style", "template", "noframes", "object",
                        "select", "textarea", "map"});
}

bool IsBlock(std::string_view name) {
  return IsHeading(name) ||
         IsOneOf(name,
                 {"address", "article", "aside",   "blockquote", "body", "center", "dd",
                  "div",     "dl",      "dt",      "fieldset",   "form", "footer", "header",
                  "hr",      "li",      "main",    "nav",        "ol",   "p",      "pre",
                  "section", "table",   "caption", "ul",         "html", "figure", "figcaption"});
}

// Blocks that stand apart from their neighbours unless their style says otherwise.
bool StandsApart(std::string_view name) {
  return IsHeading(name) ||
         IsOneOf(name, {"p", "ul", "ol", "dl", "blockquote", "pre", "hr", "table", "figure"});
}

std::wstring Trimmed(std::wstring_view text) {
  const std::size_t first = text.find_first_not_of(L" \n");
  if (first == std::wstring_view::npos) return {};
  return std::wstring(text.substr(first, text.find_last_not_of(L" \n") - first + 1));
}

std::wstring Lowered(std::wstring_view text) {
  std::wstring lowered(text);
  for (wchar_t& letter : lowered)
    if (letter >= L'A' && letter <= L'Z') letter = static_cast<wchar_t>(letter - L'A' + L'a');
  return lowered;
}

long NumberOr(std::wstring_view text, long otherwise) {
  const std::wstring copy(text.substr(0, 9));
  wchar_t* end = nullptr;
  const long number = std::wcstol(copy.c_str(), &end, 10);
  return end == copy.c_str() ? otherwise : number;
}

// What a reader can use of a link's address: "" for a script or a place in the same document.
std::wstring ReadableAddress(std::wstring_view address) {
  std::wstring readable = Trimmed(address);
  std::erase(readable, L'\n');
  const std::wstring lowered = Lowered(readable);
  if (lowered.starts_with(L"#") || lowered.starts_with(L"javascript:")) return {};
  if (lowered.starts_with(L"mailto:")) readable.erase(0, 7);
  return readable;
}

// Whether the link's text says its address already.
bool Names(std::wstring_view text, std::wstring_view address) {
  const auto bare = [](std::wstring_view whole) {
    std::wstring rest = Lowered(whole);
    for (const std::wstring_view scheme : {L"https://", L"http://", L"tel:"})
      if (rest.starts_with(scheme)) rest.erase(0, scheme.size());
    if (rest.ends_with(L'/')) rest.pop_back();
    return rest;
  };
  return bare(text) == bare(address);
}

// The content of the document, of a table cell or of a caption while it is read.
struct Flow {
  std::vector<TextBlock> blocks;
  std::wstring text;  // of the paragraph that is open
  int blank_lines = 0;
};

struct Element {
  std::string name;
  int blank_lines_after = 0;
  bool hidden = false;
};

struct List {
  bool numbered = false;
  long next = 1;
  wchar_t style = L'1';
};

struct Link {
  std::wstring address;
  std::size_t start = 0;
  std::size_t flow = 0;
};

class Renderer : public HtmlHandler {
 public:
  Renderer() { flows_.emplace_back(); }

  void StartElement(std::string_view name, const HtmlAttributes& attributes) override {
    const InlineStyle style = ReadInlineStyle(AttributeValue(attributes, "style"));
    Element element;
    element.name = name;
    element.hidden = IsUnseen(name) || style.hidden;
    if (element.hidden) ++hidden_;
    if (hidden_ == 0) {
      if (IsBlock(name)) {
        FinishParagraph();
        // What an alignment in the cell says is meant for the cell.
        if (style.right_aligned && !tables_.empty() && tables_.back().in_cell)
          tables_.back().cell.right_aligned = true;
        const int usual = StandsApart(name) && !(IsOneOf(name, {"ul", "ol"}) && !lists_.empty());
        Flow& flow = flows_.back();
        flow.blank_lines = std::max(flow.blank_lines, style.margin_top.value_or(usual));
        element.blank_lines_after = style.margin_bottom.value_or(usual);
      }
      Open(name, attributes, style);
    }
    elements_.push_back(std::move(element));
  }

  void EndElement(std::string_view name) override {
    if (elements_.empty()) return;
    const Element element = std::move(elements_.back());
    elements_.pop_back();
    if (hidden_ == 0) {
      if (IsBlock(name)) FinishParagraph();
      Close(name);
      Flow& flow = flows_.back();
      flow.blank_lines = std::max(flow.blank_lines, element.blank_lines_after);
    }
    if (element.hidden) --hidden_;
  }

  void Text(const std::wstring& text) override {
    if (hidden_ > 0) return;
    std::wstring& paragraph = flows_.back().text;
    for (const wchar_t character : text) {
      if (preformatted_ > 0) {
        if (character == L'\t')
          paragraph.append(4, L' ');
        else if (character != L'\r')
          paragraph += character;
      } else if (IsWhiteSpace(character)) {
        if (!paragraph.empty() && paragraph.back() != L' ' && paragraph.back() != L'\n')
          paragraph += L' ';
      } else if (character >= L' ' && character != L'\u00AD' && character != L'\u200B') {
        paragraph += character;
      }
    }
  }

  std::wstring Result() {
    while (!tables_.empty()) CloseTable();
    FinishParagraph();
    std::wstring text;
    for (const std::wstring& line : LayOut(flows_.front().blocks, kWidth)) text += line + L'\n';
    return text;
  }

 private:
  struct Table {
    TextTable rows;
    TextCell cell;  // the one that is open
    bool in_cell = false;
  };

  static bool IsWhiteSpace(wchar_t character) {
    return character == L' ' || (character >= L'\t' && character <= L'\r');
  }

  void Open(std::string_view name, const HtmlAttributes& attributes, const InlineStyle& style) {
    if (name == "br") {
      Break();
    } else if (name == "hr") {
      AddBlock(std::wstring(40, L'-'), true);
    } else if (name == "img") {
      Text(std::wstring(AttributeValue(attributes, "alt")));
    } else if (name == "a") {
      links_.push_back({ReadableAddress(AttributeValue(attributes, "href")),
                        flows_.back().text.size(), flows_.size()});
    } else if (name == "pre") {
      ++preformatted_;
    } else if (name == "ul" || name == "ol") {
      const std::wstring_view type = AttributeValue(attributes, "type");
      lists_.push_back({name == "ol", NumberOr(AttributeValue(attributes, "start"), 1),
                        style.list_style != 0 ? style.list_style
                        : type.size() == 1    ? type[0]
                                              : L'1'});
    } else if (name == "li") {
      OpenItem(attributes);
    } else if (name == "blockquote" || name == "dd") {
      Indent(4);
    } else if (name == "table") {
      if (tables_.size() < kDeepestTable)
        tables_.emplace_back();
      else
        ++tables_too_deep_;
    } else if (tables_too_deep_ > 0) {
      if (name == "tr" || name == "td" || name == "th") FinishParagraph();
    } else if (name == "tr" && !tables_.empty()) {
      CloseCell();
      tables_.back().rows.emplace_back();
    } else if ((name == "td" || name == "th") && !tables_.empty()) {
      OpenCell(name, attributes, style);
    }
  }

  void Close(std::string_view name) {
    if (IsHeading(name)) {
      UnderlineHeading(name[1] == '1' ? L'=' : name[1] == '2' ? L'-' : L'\0');
    } else if (name == "a") {
      CloseLink();
    } else if (name == "pre") {
      if (preformatted_ > 0) --preformatted_;
    } else if (name == "ul" || name == "ol") {
      if (!lists_.empty()) lists_.pop_back();
    } else if (IsOneOf(name, {"li", "blockquote", "dd"})) {
      marker_.reset();
      if (!indents_.empty()) indents_.pop_back();
    } else if (name == "table") {
      if (tables_too_deep_ > 0)
        --tables_too_deep_;
      else if (!tables_.empty())
        CloseTable();
    } else if (name == "td" || name == "th") {
      if (tables_too_deep_ > 0)
        FinishParagraph();
      else if (!tables_.empty())
        CloseCell();
    }
  }

  void Break() {
    std::wstring& text = flows_.back().text;
    if (text.ends_with(L' ')) text.pop_back();
    text += L'\n';
  }

  void OpenItem(const HtmlAttributes& attributes) {
    std::wstring marker = L"* ";
    if (!lists_.empty() && lists_.back().numbered) {
      List& list = lists_.back();
      list.next = NumberOr(AttributeValue(attributes, "value"), list.next);
      marker = ListNumber(list.next++, list.style) + L". ";
    }
    Indent(marker.size());
    marker_ = marker;
  }

  void Indent(std::size_t width) { indents_.push_back(width); }

  // The blanks before a line in the open cell or in the document.
  std::wstring IndentText() const {
    std::size_t width = 0;
    const std::size_t outside = indents_outside_.empty() ? 0 : indents_outside_.back();
    for (std::size_t i = indents_.size(); i > outside && width < kDeepestIndent; --i)
      width += indents_[i - 1];
    std::wstring blanks(std::min(width, kDeepestIndent), L' ');
    return blanks;
  }

  void AddBlock(std::wstring text, bool preformatted) {
    Flow& flow = flows_.back();
    TextBlock block;
    block.text = std::move(text);
    block.rest_indent = IndentText();
    block.first_indent = block.rest_indent;
    if (marker_) {
      const std::size_t room = std::min(marker_->size(), block.first_indent.size());
      block.first_indent.replace(block.first_indent.size() - room, room, *marker_);
      marker_.reset();
    }
    block.blank_lines_before = std::min(flow.blank_lines, kMostBlankLines);
    block.preformatted = preformatted;
    flow.blank_lines = 0;
    flow.blocks.push_back(std::move(block));
  }

  void FinishParagraph() {
    Flow& flow = flows_.back();
    std::wstring text = std::exchange(flow.text, {});
    for (Link& link : links_)
      if (link.flow == flows_.size()) link.start = 0;
    if (preformatted_ > 0) {
      if (text.starts_with(L'\n')) text.erase(0, 1);
      if (text.ends_with(L'\n')) text.pop_back();
      if (!text.empty()) AddBlock(std::move(text), true);
      return;
    }
    if (text.ends_with(L'\n')) text.pop_back();  // a break at the end of a block shows nothing
    if (text.find_first_not_of(L" \n") == std::wstring::npos) {
      flow.blank_lines += static_cast<int>(std::ranges::count(text, L'\n'));
      return;
    }
    if (text.find_first_not_of(L" \n\u00A0") == std::wstring::npos) {
      ++flow.blank_lines;
      return;
    }
    AddBlock(std::move(text), false);
  }

  void UnderlineHeading(wchar_t underline) {
    std::vector<TextBlock>& blocks = flows_.back().blocks;
    if (underline == 0 || blocks.empty() || blocks.back().preformatted) return;
    // The length of a heading with a token in it is not known yet.
    const std::wstring& text = blocks.back().text;
    for (std::size_t i = text.find(L'['); i != std::wstring::npos; i = text.find(L'[', i + 1))
      if (BracketTokenLength(std::wstring_view(text).substr(i)) > 0) return;
    blocks.back().underline = underline;
  }

  void CloseLink() {
    if (links_.empty()) return;
    const Link link = std::move(links_.back());
    links_.pop_back();
    if (link.address.empty() || link.flow != flows_.size()) return;
    std::wstring& text = flows_.back().text;
    const std::wstring shown =
        Trimmed(std::wstring_view(text).substr(std::min(link.start, text.size())));
    if (Names(shown, link.address)) return;
    const bool blank_after = text.ends_with(L' ');
    if (!text.empty() && !blank_after && text.back() != L'\n') text += L' ';
    text += L"<" + link.address + L">";
    if (blank_after) text += L' ';
  }

  void OpenCell(std::string_view name, const HtmlAttributes& attributes, const InlineStyle& style) {
    CloseCell();
    Table& table = tables_.back();
    if (table.rows.empty()) table.rows.emplace_back();
    table.cell = {};
    table.cell.header = name == "th";
    const auto span = [&](std::string_view attribute) {
      return static_cast<std::size_t>(
          std::max(1L, NumberOr(AttributeValue(attributes, attribute), 1)));
    };
    table.cell.column_span = span("colspan");
    table.cell.row_span = span("rowspan");
    table.cell.right_aligned =
        style.right_aligned || Lowered(AttributeValue(attributes, "align")) == L"right";
    table.in_cell = true;
    flows_.emplace_back();
    indents_outside_.push_back(indents_.size());
  }

  void CloseCell() {
    if (tables_.empty() || !tables_.back().in_cell) return;
    FinishParagraph();
    Table& table = tables_.back();
    table.cell.blocks = std::move(flows_.back().blocks);
    flows_.pop_back();
    indents_outside_.pop_back();
    table.rows.back().push_back(std::move(table.cell));
    table.in_cell = false;
  }

  void CloseTable() {
    CloseCell();
    FinishParagraph();  // what stood between the cells goes before the table
    Table table = std::move(tables_.back());
    tables_.pop_back();
    const std::wstring indent = IndentText();
    Flow& flow = flows_.back();
    for (TextBlock& block : LayOutTable(std::move(table.rows), kWidth - indent.size())) {
      block.first_indent.insert(0, indent);
      block.rest_indent.insert(0, indent);
      block.blank_lines_before =
          std::max(block.blank_lines_before, std::exchange(flow.blank_lines, 0));
      flow.blocks.push_back(std::move(block));
    }
  }

  std::vector<Element> elements_;
  std::vector<Flow> flows_;
  std::vector<Table> tables_;
  std::vector<List> lists_;
  std::vector<Link> links_;
  std::vector<std::size_t> indents_;
  std::vector<std::size_t> indents_outside_;  // by open cell: the indents that do not apply in it
  std::optional<std::wstring> marker_;        // of the list item that has no text yet
  int hidden_ = 0;
  int preformatted_ = 0;
  int tables_too_deep_ = 0;
};

}  // namespace

std::wstring PlainTextOfHtml(std::wstring_view html) {
  Renderer renderer;
  ParseHtml(html, renderer);
  return renderer.Result();
}

}  // namespace pxscheduler
