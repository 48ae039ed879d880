#include "delivery/smtp/message_queue.h"

namespace pxscheduler {

namespace {

constexpr std::size_t kMostBytes = 65536;

std::size_t SizeOf(const ComposedMessage& message) { return message.wire.bytes.View().size(); }

}  // namespace

bool MessageQueue::HasRoom() const {
  return size_ == 0 || (size_ < messages_.size() && bytes_ < kMostBytes);
}

void MessageQueue::Push() {
  bytes_ += SizeOf(Next());
  ++size_;
}

ComposedMessage& MessageQueue::Pop() {
  ComposedMessage& oldest = messages_[first_];
  bytes_ -= SizeOf(oldest);
  --size_;
  // Messages too large to wait for one another all use the memory of the first.
  first_ = size_ == 0 ? 0 : (first_ + 1) % messages_.size();
  return oldest;
}

}  // namespace pxscheduler
