#pragma once

#include <cstdint>
#include <initializer_list>
#include <optional>
#include <string_view>
#include <unordered_map>

#include "letters/rtf/document.h"

namespace pxscheduler {

class RtfParser;

// The number after a control word.
struct Parameter {
  std::optional<std::int32_t> value;

  // Of a word that turns something on, or off by 0.
  bool On() const { return value != 0; }
  std::int32_t Or(std::int32_t otherwise) const { return value.value_or(otherwise); }
  std::int32_t Number() const { return Or(0); }
  // Twips, no longer than the largest page either way.
  std::int32_t Length() const;
};

// What each control word does.
class ControlWords {
 public:
  using Action = void (*)(RtfParser&, const Parameter&);

  struct Entry {
    Action action = nullptr;
    bool begins_destination = false;  // and may follow \*
  };

  void Add(std::string_view word, Action action) { entries_[word] = {action, false}; }
  void Add(std::initializer_list<std::string_view> words, Action action) {
    for (const std::string_view word : words) Add(word, action);
  }
  void AddDestination(std::string_view word, Action begin) { entries_[word] = {begin, true}; }
  void AddDestination(std::initializer_list<std::string_view> words, Action begin) {
    for (const std::string_view word : words) AddDestination(word, begin);
  }

  // Null for an unknown word.
  const Entry* Find(std::string_view word) const {
    const auto found = entries_.find(word);
    return found == entries_.end() ? nullptr : &found->second;
  }

 private:
  std::unordered_map<std::string_view, Entry> entries_;
};

void AddBorderWords(ControlWords& words);
void AddCharacterWords(ControlWords& words);
void AddDestinationWords(ControlWords& words);
void AddHeaderWords(ControlWords& words);
void AddListWords(ControlWords& words);
void AddParagraphWords(ControlWords& words);
void AddTableWords(ControlWords& words);

// The shade of a pattern: a percentage of black over white.
Colour Grey(std::int32_t hundredths_of_percent);

}  // namespace pxscheduler
