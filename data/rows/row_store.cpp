#include "data/rows/row_store.h"

#include <algorithm>
#include <array>
#include <bit>
#include <charconv>
#include <cmath>
#include <cstring>
#include <limits>
#include <utility>

#include "data/rows/sort_key.h"
#include "platform/runtime_error.h"
#include "text/utf8.h"

namespace pxscheduler {
namespace {

// The byte before a cell. Numbers follow in the machine's byte order.
enum Tag : unsigned char {
  kNull,
  kFalse,
  kTrue,
  kInteger8,
  kInteger32,
  kInteger64,
  kFloat,
  kDouble,
  kDecimal,   // a length of one byte, then the digits
  kDate,      // days since 1 January 1970 as 32 bits, at midnight
  kDateTime,  // the same, then the second of the day as 32 bits
  kLongText,  // a length of 32 bits, then the text
  kShortText  // and every greater byte: a text, whose length is the difference
};

constexpr std::size_t kLongestShortText = 255 - kShortText;

template <typename Number>
Number Load(const char* bytes) {
  Number number;
  std::memcpy(&number, bytes, sizeof number);
  return number;
}

template <typename Number>
void Store(Number number, std::string& out) {
  std::array<char, sizeof number> bytes{};
  std::memcpy(bytes.data(), &number, sizeof number);
  out.append(bytes.data(), bytes.size());
}

unsigned char TagOf(const char* cell) { return static_cast<unsigned char>(*cell); }

// The bytes of a text or decimal cell.
std::string_view TextOfCell(const char* cell) {
  const unsigned char tag = TagOf(cell);
  if (tag == kDecimal) return {cell + 2, static_cast<unsigned char>(cell[1])};
  if (tag == kLongText) return {cell + 5, Load<std::uint32_t>(cell + 1)};
  return {cell + 1, static_cast<std::size_t>(tag - kShortText)};
}

const char* NextCell(const char* cell) {
  switch (TagOf(cell)) {
    case kNull:
    case kFalse:
    case kTrue:
      return cell + 1;
    case kInteger8:
      return cell + 2;
    case kInteger32:
    case kFloat:
    case kDate:
      return cell + 5;
    case kInteger64:
    case kDouble:
    case kDateTime:
      return cell + 9;
    default: {
      const std::string_view text = TextOfCell(cell);
      return text.data() + text.size();
    }
  }
}

std::int64_t IntegerOfCell(const char* cell) {
  switch (TagOf(cell)) {
    case kInteger8:
      return Load<std::int8_t>(cell + 1);
    case kInteger32:
      return Load<std::int32_t>(cell + 1);
    default:
      return Load<std::int64_t>(cell + 1);
  }
}

DateTime DateOfCell(const char* cell) {
  DateTime value{std::chrono::sys_days{std::chrono::days{Load<std::int32_t>(cell + 1)}}};
  if (TagOf(cell) == kDateTime)
    value.time_of_day = std::chrono::seconds{Load<std::int32_t>(cell + 5)};
  return value;
}

template <typename Number>
void AppendKeyOf(Number number, std::string& key) {
  std::array<char, 32> buffer{};
  const auto written = std::to_chars(buffer.data(), buffer.data() + buffer.size(), number);
  AppendNumberKey({buffer.data(), written.ptr}, key);
}

}  // namespace

RowStore::RowStore(std::vector<std::wstring> column_names) : columns_{std::move(column_names)} {}

void RowStore::AppendNull() { row_ += static_cast<char>(kNull); }

void RowStore::AppendBool(bool value) { row_ += static_cast<char>(value ? kTrue : kFalse); }

void RowStore::AppendInteger(std::int64_t value) {
  if (std::in_range<std::int8_t>(value)) {
    row_ += static_cast<char>(kInteger8);
    Store(static_cast<std::int8_t>(value), row_);
  } else if (std::in_range<std::int32_t>(value)) {
    row_ += static_cast<char>(kInteger32);
    Store(static_cast<std::int32_t>(value), row_);
  } else {
    row_ += static_cast<char>(kInteger64);
    Store(value, row_);
  }
}

void RowStore::AppendFloat(float value) {
  row_ += static_cast<char>(kFloat);
  Store(value, row_);
}

void RowStore::AppendDouble(double value) {
  row_ += static_cast<char>(kDouble);
  Store(value, row_);
}

void RowStore::AppendDecimal(std::string_view digits) {
  digits = digits.substr(0, std::numeric_limits<unsigned char>::max());
  row_ += static_cast<char>(kDecimal);
  row_ += static_cast<char>(digits.size());
  row_ += digits;
}

void RowStore::AppendDateTime(const DateTime& value) {
  const bool is_midnight = value.time_of_day == std::chrono::seconds{0};
  row_ += static_cast<char>(is_midnight ? kDate : kDateTime);
  Store(static_cast<std::int32_t>(value.date.time_since_epoch().count()), row_);
  if (!is_midnight) Store(static_cast<std::int32_t>(value.time_of_day.count()), row_);
}

void RowStore::AppendText(std::string_view utf8) {
  if (utf8.size() <= kLongestShortText) {
    row_ += static_cast<char>(kShortText + utf8.size());
  } else {
    if (!std::in_range<std::uint32_t>(utf8.size())) throw OutOfMemory();
    row_ += static_cast<char>(kLongText);
    Store(static_cast<std::uint32_t>(utf8.size()), row_);
  }
  row_ += utf8;
}

void RowStore::EndRow() {
  if (row_count_ % kPositionsInChunk == 0)
    positions_.push_back(std::make_unique_for_overwrite<ByteArena::Position[]>(kPositionsInChunk));
  PositionOf(row_count_) = cells_.Append(row_);
  ++row_count_;
  row_.clear();
}

RowStore::Cell RowStore::CellAt(std::size_t row, std::size_t column) const {
  Cell cell = cells_.At(PositionOf(row));
  for (; column > 0; --column) cell = NextCell(cell);
  return cell;
}

void RowStore::FindCells(std::size_t row, std::vector<Cell>& cells) const {
  cells.resize(ColumnCount());
  Cell next = cells_.At(PositionOf(row));
  for (Cell& cell : cells) {
    cell = next;
    next = NextCell(next);
  }
}

Value RowStore::Read(Cell cell) {
  switch (TagOf(cell)) {
    case kNull:
      return std::monostate{};
    case kFalse:
      return false;
    case kTrue:
      return true;
    case kInteger8:
    case kInteger32:
    case kInteger64:
      return IntegerOfCell(cell);
    case kFloat:
      return Load<float>(cell + 1);
    case kDouble:
      return Load<double>(cell + 1);
    case kDecimal:
      return Decimal{std::string{TextOfCell(cell)}};
    case kDate:
    case kDateTime:
      return DateOfCell(cell);
    default:
      return FromUtf8(TextOfCell(cell));
  }
}

void RowStore::AppendKey(std::size_t row, std::size_t column, std::string& key) const {
  const Cell cell = CellAt(row, column);
  switch (TagOf(cell)) {
    case kNull:
      return AppendNullKey(key);
    case kFalse:
    case kTrue:
      return AppendKeyOf(TagOf(cell) == kTrue ? 1 : 0, key);
    case kInteger8:
    case kInteger32:
    case kInteger64:
      return AppendKeyOf(IntegerOfCell(cell), key);
    case kFloat:
      return AppendKeyOf(Load<float>(cell + 1), key);
    case kDouble:
      return AppendKeyOf(Load<double>(cell + 1), key);
    case kDecimal:
      return AppendNumberKey(TextOfCell(cell), key);
    case kDate:
    case kDateTime:
      return AppendDateKey(DateOfCell(cell), key);
    default:
      return AppendTextKey(TextOfCell(cell), key);
  }
}

struct RowStore::SortEntry {
  std::uint64_t word;  // the first bytes of the key, then the position of the whole key
  std::uint32_t row;
};

// Each key is made once for its first eight bytes, which decide most comparisons, and once more,
// whole, only among rows that share them; so the keys of all rows are never held at once unless all
// begin alike.
void RowStore::Sort(std::size_t column) {
  if (!std::in_range<std::uint32_t>(row_count_)) throw OutOfMemory();
  std::vector<SortEntry> entries;
  entries.reserve(row_count_);
  std::string key;
  for (std::size_t row = 0; row < row_count_; ++row) {
    key.clear();
    AppendKey(row, column, key);
    std::uint64_t word = 0;
    for (std::size_t at = 0; at < sizeof word; ++at)
      word = word << 8U | (at < key.size() ? static_cast<unsigned char>(key[at]) : 0U);
    entries.push_back({word, static_cast<std::uint32_t>(row)});
  }
  std::sort(entries.begin(), entries.end(),
            [](const SortEntry& left, const SortEntry& right) { return left.word < right.word; });
  for (auto first = entries.begin(); first != entries.end();) {
    const auto last = std::find_if(
        first, entries.end(), [&](const SortEntry& entry) { return entry.word != first->word; });
    if (last - first > 1) SortRun(&*first, &*first + (last - first), column);
    first = last;
  }
  for (SortEntry& entry : entries) entry.word = PositionOf(entry.row);
  for (std::size_t row = 0; row < row_count_; ++row) PositionOf(row) = entries[row].word;
}

void RowStore::SortRun(SortEntry* first, SortEntry* last, std::size_t column) const {
  ByteArena keys;
  std::string key;
  for (SortEntry* entry = first; entry != last; ++entry) {
    key.assign(sizeof(std::uint32_t), '\0');
    AppendKey(entry->row, column, key);
    const auto length = static_cast<std::uint32_t>(key.size() - sizeof(std::uint32_t));
    std::memcpy(key.data(), &length, sizeof length);
    entry->word = keys.Append(key);
  }
  const auto key_of = [&keys](const SortEntry& entry) {
    const char* bytes = keys.At(entry.word);
    return std::string_view{bytes + sizeof(std::uint32_t), Load<std::uint32_t>(bytes)};
  };
  std::sort(first, last, [&](const SortEntry& left, const SortEntry& right) {
    const int order = key_of(left).compare(key_of(right));
    return order != 0 ? order < 0 : PositionOf(left.row) < PositionOf(right.row);
  });
}

}  // namespace pxscheduler
