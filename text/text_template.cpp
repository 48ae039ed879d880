#include "text/text_template.h"

namespace pxscheduler {

std::wstring Filled(const TextTemplate& text, std::span<const std::wstring> values) {
  std::wstring filled = text.constants.front();
  for (std::size_t place = 0; place < text.places.size(); ++place)
    filled.append(values[text.places[place]]).append(text.constants[place + 1]);
  return filled;
}

}  // namespace pxscheduler
