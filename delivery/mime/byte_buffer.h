#pragma once

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <memory>
#include <string_view>

namespace pxscheduler {

// Bytes that are put in at the end. Clear keeps the memory, so a buffer that is used again and
// again allocates nothing once it has its size; unlike a string it never fills memory that is about
// to be written.
class ByteBuffer {
 public:
  void Clear() { size_ = 0; }
  std::string_view View() const { return {bytes_.get(), size_}; }

  void Append(std::string_view bytes) {
    char* const end = Room(bytes.size());
    std::copy(bytes.begin(), bytes.end(), end);
    SetEnd(end + bytes.size());
  }

  // The first byte after the end, with at least `size` bytes that may be written from there on.
  // SetEnd says how many were; any other call before that makes the pointer invalid.
  char* Room(std::size_t size) {
    if (capacity_ - size_ < size) Grow(size);
    return bytes_.get() + size_;
  }
  void SetEnd(const char* end) { size_ = static_cast<std::size_t>(end - bytes_.get()); }

  // Replaces bytes from `position`, 0-based, on; as many must be there.
  void Overwrite(std::size_t position, std::string_view bytes) {
    std::copy(bytes.begin(), bytes.end(), bytes_.get() + position);
  }

  // No more than there are.
  void Truncate(std::size_t size) { size_ = size; }

  // No more than there are.
  void DropFront(std::size_t size) {
    if (size == 0) return;
    std::copy(bytes_.get() + size, bytes_.get() + size_, bytes_.get());
    size_ -= size;
  }

 private:
  void Grow(std::size_t size) {
    const std::size_t capacity = std::max(2 * capacity_, size_ + size);
    // Not make_unique, which would clear the memory first.
    std::unique_ptr<char[]> bytes(new char[capacity]);
    if (size_ > 0) std::memcpy(bytes.get(), bytes_.get(), size_);
    bytes_ = std::move(bytes);
    capacity_ = capacity;
  }

  std::unique_ptr<char[]> bytes_;
  std::size_t size_ = 0;
  std::size_t capacity_ = 0;
};

}  // namespace pxscheduler
