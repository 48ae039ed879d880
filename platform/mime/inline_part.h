#pragma once

#include <string>

namespace pxscheduler {

// A picture that an HTML document shows by "cid:" and its content identifier (RFC 2392).
struct InlinePart {
  std::string
      content_id;  // letters, digits, "." and "-", with an "@" and a domain; unique in a run
  std::string media_type;  // for instance "image/png"
  std::string bytes;
};

}  // namespace pxscheduler
