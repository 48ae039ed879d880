#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string_view>
#include <vector>

namespace pxscheduler {

// Byte strings that stay where they are appended. The arena grows by chunks of up to a mebibyte, so
// that no more than that is allocated in advance, and nothing is moved.
class ByteArena {
 public:
  // Where a string begins. One that is appended later has a greater position.
  using Position = std::uint64_t;

  // Stores a copy of the bytes, contiguously.
  Position Append(std::string_view bytes) {
    if (bytes.size() > capacity_ - used_) AddChunk(bytes.size());
    const Position position = (Position{chunks_.size() - 1} << kOffsetBits) | used_;
    bytes.copy(chunks_.back().get() + used_, bytes.size());
    used_ += bytes.size();
    return position;
  }

  // The bytes of the string at the position. Valid as long as the arena.
  const char* At(Position position) const {
    return chunks_[static_cast<std::size_t>(position >> kOffsetBits)].get() +
           (position & kOffsetMask);
  }

 private:
  static constexpr std::size_t kSmallestChunk = std::size_t{1} << 12;
  static constexpr std::size_t kLargestChunk = std::size_t{1} << 20;
  static constexpr unsigned kOffsetBits = 40;
  static constexpr Position kOffsetMask = (Position{1} << kOffsetBits) - 1;

  void AddChunk(std::size_t least) {
    const std::size_t next = std::clamp(2 * capacity_, kSmallestChunk, kLargestChunk);
    capacity_ = std::max(least, next);
    chunks_.push_back(std::make_unique_for_overwrite<char[]>(capacity_));
    used_ = 0;
  }

  std::vector<std::unique_ptr<char[]>> chunks_;
  std::size_t capacity_ = 0;  // of the last chunk
  std::size_t used_ = 0;      // of the last chunk
};

}  // namespace pxscheduler
