#pragma once

#include <cctype>
#include <cstdint>
#include <string>
#include <vector>

namespace hs {
namespace test {

/// Bytes written as hex pairs, with blanks and 'text' runs in single quotes for readability:
/// "8c 80 98 't1' 00".
inline std::vector<uint8_t> HexBytes(const std::string& hex) {
  std::vector<uint8_t> out;
  for (size_t i = 0; i < hex.size();) {
    char c = hex[i];
    if (c == '\'') {
      size_t end = hex.find('\'', i + 1);
      out.insert(out.end(), hex.begin() + static_cast<long>(i) + 1,
                 hex.begin() + static_cast<long>(end));
      i = end + 1;
    } else if (std::isxdigit(static_cast<unsigned char>(c))) {
      out.push_back(static_cast<uint8_t>(std::stoi(hex.substr(i, 2), nullptr, 16)));
      i += 2;
    } else {
      ++i;
    }
  }
  return out;
}

}  // namespace test
}  // namespace hs
