#include "cfg.h"

#include <cstdlib>

bool cfg_is_on(const std::string& name) {
  const char* value = std::getenv("KORVEL_CONFIG_ON");
  if (value == nullptr || name.empty()) return false;
  const std::string all(value);
  std::size_t start = 0;
  while (start <= all.size()) {
    std::size_t end = all.find(',', start);
    if (end == std::string::npos) end = all.size();
    std::string entry = all.substr(start, end - start);
    const auto first = entry.find_first_not_of(" \t");
    const auto last = entry.find_last_not_of(" \t");
    entry = first == std::string::npos ? std::string() : entry.substr(first, last - first + 1);
    if (entry == name) return true;
    start = end + 1;
  }
  return false;
}
