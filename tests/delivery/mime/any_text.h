#pragma once

#include <algorithm>
#include <cstddef>
#include <random>
#include <string>
#include <vector>

#include "text/text_template.h"
#include "text/utf8.h"

namespace pxscheduler {

inline std::wstring AnyText(std::size_t most, std::mt19937& random) {
  const std::wstring alphabet = L"abcdefghijklmnopqrstuvwxyz....==   \t\n\n\r<>&\u00e9\u20ac";
  std::wstring text;
  for (std::size_t i = random() % most; i > 0; --i) {
    const std::size_t letter = random() % (alphabet.size() + 1);
    // Two units on some machines, which no part splits.
    text += letter < alphabet.size() ? std::wstring(1, alphabet[letter]) : L"\U0001F600";
  }
  return text;
}

// Up to five constant texts, short and long, with a value between each.
inline TextTemplate AnyTemplate(std::mt19937& random) {
  TextTemplate text;
  text.constants.front() = AnyText(300, random);
  for (std::size_t place = random() % 5; place > 0; --place) {
    text.places.push_back(text.places.size());
    text.constants.push_back(AnyText(300, random));
  }
  return text;
}

inline std::vector<std::wstring> AnyValues(const TextTemplate& text, std::mt19937& random) {
  std::vector<std::wstring> values(text.places.size());
  for (std::wstring& value : values) value = AnyText(20, random);
  return values;
}

// The text with each of its line breaks as LF.
inline std::string Lines(const std::wstring& text) {
  std::string lines = ToUtf8(text);
  for (std::size_t at = 0; (at = lines.find("\r\n", at)) != std::string::npos;) lines.erase(at, 1);
  std::replace(lines.begin(), lines.end(), '\r', '\n');
  return lines;
}

}  // namespace pxscheduler
