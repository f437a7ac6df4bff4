// Version stand-in. The values are fixed at the first call of the process.
#include "ver.h"

#include <cstdlib>

#include "host_defaults.h"

namespace {

std::vector<std::string> split_versions(const std::string& text) {
  std::vector<std::string> versions;
  std::size_t start = 0;
  while (start < text.size()) {
    std::size_t end = text.find(';', start);
    if (end == std::string::npos) end = text.size();
    if (end > start) versions.push_back(text.substr(start, end - start));
    start = end + 1;
  }
  return versions;
}

}  // namespace

std::string ver_get_version() {
  static const std::string version = [] {
    const char* value = std::getenv("KORVEL_VERSION");
    return value ? std::string(value) : std::string(KORVEL_DEFAULT_VERSION);
  }();
  return version;
}

const std::vector<std::string>& ver_get_all_versions() {
  static const std::vector<std::string> versions = [] {
    const char* value = std::getenv("KORVEL_VERSIONS");
    return split_versions(value ? std::string(value) : std::string(KORVEL_DEFAULT_VERSIONS));
  }();
  return versions;
}
