#include "delivery/smtp/server_extensions.h"

#include <algorithm>
#include <charconv>

#include "text/ascii_case.h"

namespace pxscheduler {

namespace {

std::vector<std::string> Words(std::string_view line) {
  std::vector<std::string> words;
  for (std::size_t start = line.find_first_not_of(' '); start != std::string_view::npos;) {
    const std::size_t end = std::min(line.find(' ', start), line.size());
    words.emplace_back(line.substr(start, end - start));
    start = line.find_first_not_of(' ', end);
  }
  return words;
}

}  // namespace

bool ServerExtensions::Offers(std::string_view mechanism) const {
  return std::find(mechanisms.begin(), mechanisms.end(), LowerAscii(mechanism)) != mechanisms.end();
}

ServerExtensions ReadExtensions(const Reply& hello) {
  ServerExtensions extensions;
  for (std::size_t i = 1; i < hello.lines.size(); ++i) {  // the first line is the server's name
    std::string line = LowerAscii(hello.lines[i]);
    if (line.starts_with("auth=")) line[4] = ' ';  // as servers wrote it before the standard
    const std::vector<std::string> words = Words(line);
    const std::string_view keyword = words.empty() ? std::string_view() : words[0];
    if (keyword == "pipelining") {
      extensions.pipelining = true;
    } else if (keyword == "8bitmime") {
      extensions.eight_bit = true;
    } else if (keyword == "smtputf8") {
      extensions.international = true;
    } else if (keyword == "starttls") {
      extensions.start_tls = true;
    } else if (keyword == "size") {
      extensions.size = true;
      if (words.size() > 1) {
        std::from_chars(words[1].data(), words[1].data() + words[1].size(),
                        extensions.largest_message);
      }
    } else if (keyword == "auth") {
      extensions.mechanisms.insert(extensions.mechanisms.end(), words.begin() + 1, words.end());
    }
  }
  return extensions;
}

}  // namespace pxscheduler
