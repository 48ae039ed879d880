#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "letters/html/html_parser.h"
#include "letters/html/inline_style.h"
#include "letters/html/text_layout.h"
#include "letters/html/text_table.h"

namespace pxscheduler {

// Renders a document as plain text (plain_text.h) while it is parsed.
class TextRenderer : public HtmlHandler {
 public:
  TextRenderer() { flows_.emplace_back(); }

  void StartElement(std::string_view name, const HtmlAttributes& attributes) override;
  void EndElement(std::string_view name) override;
  void Text(const std::wstring& text) override;
  // The rendering, when all of the document has been parsed.
  std::wstring Result();

 private:
  // Customary in plain mail: it leaves room for the marks of a quotation, and a line of
  // quoted-printable holds it whole where it is plain.
  static constexpr std::size_t kWidth = 72;

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

  struct Table {
    TextTable rows;
    TextCell cell;  // the one that is open
    bool in_cell = false;
  };

  void Open(std::string_view name, const HtmlAttributes& attributes, const InlineStyle& style);
  void Close(std::string_view name);
  void Break();
  void OpenItem(const HtmlAttributes& attributes);
  void Indent(std::size_t width) { indents_.push_back(width); }

  // The blanks before a line in the open cell or in the document.
  std::wstring IndentText() const;
  void AddBlock(std::wstring text, bool preformatted);
  void FinishParagraph();
  void UnderlineHeading(wchar_t underline);
  void CloseLink();
  void OpenCell(std::string_view name, const HtmlAttributes& attributes, const InlineStyle& style);
  void CloseCell();
  void CloseTable();

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

}  // namespace pxscheduler
