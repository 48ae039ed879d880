#pragma once

#include <array>
#include <cstddef>

#include "delivery/mime/address.h"
#include "delivery/mime/wire_message.h"
#include "delivery/smtp/send_outcome.h"

namespace pxscheduler {

struct ComposedMessage {
  Address recipient;
  WireMessage wire;
  Failure failure;  // why it cannot be sent
};

// The composed messages that wait to be sent, oldest first. Their memory is reused.
class MessageQueue {
 public:
  // Whether another message may be composed before the oldest is sent: a few small ones may wait,
  // and always one.
  bool HasRoom() const;
  bool IsEmpty() const { return size_ == 0; }

  // Where to compose the next message, which Push then appends. Only where HasRoom.
  ComposedMessage& Next() { return messages_[(first_ + size_) % messages_.size()]; }
  void Push();
  // Takes the oldest message out. It stays valid until the next Push.
  ComposedMessage& Pop();

 private:
  std::array<ComposedMessage, 8> messages_;
  std::size_t first_ = 0;
  std::size_t size_ = 0;
  std::size_t bytes_ = 0;
};

}  // namespace pxscheduler
