#pragma once

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <memory>
#include <string_view>

namespace pxscheduler {

// Bytes, appended at the end. Clear keeps the memory, so that a reused buffer soon allocates
// nothing; unlike a string it never fills memory that is about to be written.
class ByteBuffer {
 public:
  void Clear() { size_ = 0; }
  std::string_view View() const { return {bytes_.get(), size_}; }

  void Append(std::string_view bytes) {
    char* const end = Room(bytes.size());
    std::copy(bytes.begin(), bytes.end(), end);
    SetEnd(end + bytes.size());
  }

  // Where to write up to `size` bytes behind the end. Call SetEnd with the end of what was written;
  // any other call before that invalidates the pointer.
  char* Room(std::size_t size) {
    if (capacity_ - size_ < size) Grow(size);
    return bytes_.get() + size_;
  }
  void SetEnd(const char* end) { size_ = static_cast<std::size_t>(end - bytes_.get()); }

  // Replaces the bytes at `position`, 0-based. The buffer must hold as many from there on.
  void Overwrite(std::size_t position, std::string_view bytes) {
    std::copy(bytes.begin(), bytes.end(), bytes_.get() + position);
  }

  // Neither takes more than there is.
  void Truncate(std::size_t size) { size_ = size; }
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
