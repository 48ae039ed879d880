#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace pxscheduler {

// The names of a result's columns, looked up without case and without allocating.
class ColumnNames {
 public:
  ColumnNames() = default;
  explicit ColumnNames(std::vector<std::wstring> names);

  std::size_t Count() const { return names_.size(); }
  const std::vector<std::wstring>& All() const { return names_; }
  // 0-based. Of several columns with one name it is the first.
  std::optional<std::size_t> Find(std::wstring_view name) const;

 private:
  std::vector<std::wstring> names_;
  std::vector<std::uint32_t> slots_;  // open addressing: column + 1, 0 where a slot is free
};

}  // namespace pxscheduler
