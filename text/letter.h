#pragma once

#include <string>
#include <vector>

namespace pxscheduler {

// A picture that an HTML document shows by "cid:" and its content identifier (RFC 2392).
struct LetterPicture {
  // Letters, digits, "." and "-", with an "@" and a domain; unique in a run.
  std::string content_id;
  std::string media_type;  // for instance "image/png"
  std::string bytes;
};

// A letter as it was read from its file, before any client's fields are filled in.
struct Letter {
  std::wstring body;        // an HTML document or plain text
  std::wstring plain_text;  // the readable rendering of an HTML document; plain text itself
  std::vector<LetterPicture> pictures;
};

}  // namespace pxscheduler
